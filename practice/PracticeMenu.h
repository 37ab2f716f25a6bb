#pragma once

namespace parcelory {

class PracticeDesk;
class Program;

/// A menu of scans, weights and mishaps, so that a clerk has seen each mishap before it happens with real postage.
void addPracticeMenu(Program &program, PracticeDesk &desk);

} // namespace parcelory
