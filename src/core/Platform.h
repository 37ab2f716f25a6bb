#pragma once

#include "core/Deployment.h"
#include "core/ports/Application.h"
#include "core/ports/Clock.h"
#include "core/ports/ContactsSource.h"
#include "core/ports/Desktop.h"
#include "core/ports/HidSource.h"
#include "core/ports/HttpTransport.h"
#include "core/ports/Keyboard.h"
#include "core/ports/Preferences.h"
#include "core/ports/ProcessRunner.h"
#include "core/ports/Prompts.h"
#include "core/ports/SecretStore.h"
#include "core/ports/WebSession.h"

#include <QDir>

#include <memory>

namespace parcelory {

/// Everything that the program needs from outside, passed in once at the start. main builds the real platform; the
/// practice desk and the tests build their own; nothing else chooses an implementation.
struct Platform {
    HttpTransport &http;
    Clock &clock;
    SecretStore &secrets;
    Preferences &preferences;
    Prompts &prompts;
    Desktop &desktop;
    ProcessRunner &processes;
    HidSource &hid;
    Keyboard &keyboard;
    WebSession &web;
    Application &application;

    QDir dataFolder; ///< the folder "Parcelory" of the user's application support; may not exist yet
    Deployment deployment;
    std::shared_ptr<ContactsSource> contacts = {}; ///< null if the system has no contacts
    bool practice = false;                         ///< nothing is real: no postage, no paper
};

} // namespace parcelory
