#pragma once

#include "core/Platform.h"
#include "shell/platform/HidScales.h"
#include "shell/platform/Keychain.h"
#include "shell/platform/NetworkTransport.h"
#include "shell/platform/SettingsPreferences.h"
#include "shell/platform/SystemApplication.h"
#include "shell/platform/SystemClock.h"
#include "shell/platform/SystemDesktop.h"
#include "shell/platform/SystemProcesses.h"
#include "shell/platform/WebEngineSession.h"

namespace parcelory {

/// The real world: this machine's network, secret store, preferences, printers and data folder.
class SystemPlatform {
public:
    SystemPlatform(Prompts &prompts, Keyboard &keyboard);

    Platform &platform() { return m_platform; }

private:
    NetworkTransport m_http{NetworkTransport::Reach::anywhere};
    SystemClock m_clock;
    Keychain m_secrets;
    SettingsPreferences m_preferences;
    SystemProcesses m_processes;
    SystemDesktop m_desktop{m_processes};
    HidScales m_hid;
    WebEngineSession m_web;
    SystemApplication m_application;
    Platform m_platform;
};

/// The folder "Parcelory" of the user's application support.
QDir applicationSupportFolder();

} // namespace parcelory
