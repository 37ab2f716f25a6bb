#pragma once

#include "core/Platform.h"
#include "shell/platform/ConsolePrompts.h"
#include "shell/platform/HidScales.h"
#include "shell/platform/Keychain.h"
#include "shell/platform/NetworkTransport.h"
#include "shell/platform/SettingsPreferences.h"
#include "shell/platform/SystemClock.h"
#include "shell/platform/SystemDesktop.h"
#include "shell/platform/SystemProcesses.h"

namespace parcelory {

/// The real world: this machine's network, secret store, preferences, printers and data folder.
class SystemPlatform {
public:
    SystemPlatform();

    Platform &platform() { return m_platform; }

private:
    NetworkTransport m_http{NetworkTransport::Reach::anywhere};
    SystemClock m_clock;
    Keychain m_secrets;
    SettingsPreferences m_preferences;
    ConsolePrompts m_prompts;
    SystemProcesses m_processes;
    SystemDesktop m_desktop{m_processes};
    HidScales m_hid;
    SilentKeyboard m_keyboard;
    Platform m_platform;
};

/// The folder "Parcelory" of the user's application support.
QDir applicationSupportFolder();

} // namespace parcelory
