#pragma once

class QMenuBar;

namespace parcelory {

class PracticeDesk;

/// A menu of mishaps: what a clerk should have seen once before it happens with real postage.
void addPracticeMenu(QMenuBar *bar, PracticeDesk &desk);

} // namespace parcelory
