#pragma once

#include "core/Platform.h"
#include "platform/HidScales.h"
#include "platform/Keychain.h"
#include "platform/NetworkTransport.h"
#include "platform/SettingsPreferences.h"
#include "platform/SystemApplication.h"
#include "platform/SystemClock.h"
#include "platform/SystemDesktop.h"
#include "platform/SystemProcesses.h"
#include "platform/WebEngineSession.h"

namespace parcelory {

/// The real platform: this machine's network, secret store, preferences, printers and data folder.
class SystemPlatform {
public:
    SystemPlatform(Prompts &prompts, Keyboard &keyboard);

    Platform &platform() { return m_platform; }

private:
    SystemClock m_clock;
    NetworkTransport m_http{NetworkTransport::Reach::anywhere, m_clock};
    Keychain m_secrets;
    SettingsPreferences m_preferences;
    SystemProcesses m_processes;
    SystemDesktop m_desktop{m_processes};
    HidScales m_hid;
    WebEngineSession m_web;
    SystemApplication m_application;
    Platform m_platform;
};

/// The folder "Parcelory" in the user's application data.
QDir applicationSupportFolder();

} // namespace parcelory
