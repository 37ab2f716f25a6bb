#pragma once

class QWidget;

namespace parcelory {

class AppState;

/// The first page of the practice desk: there is nothing to sign in to.
QWidget *makePracticeSignIn(AppState &app);

} // namespace parcelory
