#pragma once

#include "core/Platform.h"
#include "platform/NetworkTransport.h"
#include "platform/SettingsPreferences.h"
#include "platform/SystemClock.h"
#include "platform/WebEngineSession.h"
#include "practice/MemorySecrets.h"
#include "practice/PracticeApplication.h"
#include "practice/PracticePrinter.h"
#include "practice/PracticeScale.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "practice/carrier/PracticeCarrier.h"

namespace parcelory {

/// The world of the practice desk: the real program on an embedded carrier and back office, printers of paper-free
/// stock and a data folder of its own. Nothing of it reaches beyond this machine, and nothing real is reached from it.
class PracticeDesk {
public:
    /// Starts the carrier and sets a practice key and the practice printers where none are set. `folder`: empty for
    /// "Parcelory Practice" beside the real records.
    PracticeDesk(const QString &folder, Prompts &prompts, Keyboard &keyboard);

    Platform &platform() { return m_platform; }
    /// Makes the program believe that it is no practice desk and that `token` is the desk's key: for pictures and
    /// tests of what a real desk shows.
    void pose(const QString &token);
    PracticeCarrier &carrier() { return m_carrier; }
    PracticeBackOffice &backOffice() { return m_backOffice; }
    /// How to sign in here, for the sign-in screen.
    static QString signInNote();
    const PracticePrinter &printer() const { return m_printer; }
    PracticePrinter &printer() { return m_printer; }
    PracticeScale &scale() { return m_scale; }

private:
    QDir m_folder;
    PracticeCarrier m_carrier;
    PracticeBackOffice m_backOffice;
    NetworkTransport m_http{NetworkTransport::Reach::loopbackOnly};
    SystemClock m_clock;
    MemorySecrets m_secrets;
    SettingsPreferences m_preferences;
    PracticePrinter m_printer;
    PracticeDesktop m_desktop;
    PracticeScale m_scale{m_clock};
    WebEngineSession m_web;
    PracticeApplication m_application;
    Platform m_platform;
};

} // namespace parcelory
