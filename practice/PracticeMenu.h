#pragma once

class QMenuBar;

namespace parcelory {

class PracticeDesk;

/// A menu of scans, weights and mishaps, so that a clerk has seen each mishap before it happens with real postage.
void addPracticeMenu(QMenuBar *bar, PracticeDesk &desk);

} // namespace parcelory
