#pragma once

#include "core/Platform.h"
#include "platform/NetworkTransport.h"
#include "platform/SettingsPreferences.h"
#include "platform/WebEngineSession.h"
#include "practice/MemorySecrets.h"
#include "practice/PracticeApplication.h"
#include "practice/PracticePrinter.h"
#include "practice/PracticeScale.h"
#include "practice/PracticeTime.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "practice/carrier/PracticeCarrier.h"

namespace parcelory {

/// The practice desk's platform: the real program with an embedded carrier and back office, printers that write files,
/// and its own data folder. It sends nothing beyond this machine and reaches no real service or record.
class PracticeDesk {
public:
    /// Starts the carrier and the back office, stores a practice key and sign-in, and chooses the practice printers if
    /// none are chosen. `folder`: empty for "Parcelory Practice" next to the real records.
    PracticeDesk(const QString &folder, Prompts &prompts, Keyboard &keyboard);

    Platform &platform() { return m_platform; }
    /// Hides practice mode and makes `token` the active key, for pictures and tests of a real desk's screens.
    void pose(const QString &token);
    PracticeCarrier &carrier() { return m_carrier; }
    PracticeBackOffice &backOffice() { return m_backOffice; }
    /// How to sign in, for the sign-in screen.
    static QString signInNote();
    const PracticePrinter &printer() const { return m_printer; }
    PracticePrinter &printer() { return m_printer; }
    PracticeScale &scale() { return m_scale; }

private:
    QDir m_folder;
    PracticeCarrier m_carrier;
    PracticeBackOffice m_backOffice;
    PracticeClock m_clock;
    NetworkTransport m_http{NetworkTransport::Reach::loopbackOnly, m_clock};
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
