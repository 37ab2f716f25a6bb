// The function of hidapi that only its version for macOS has; see Security/Security.h beside this file.
#pragma once

extern "C" void hid_darwin_set_open_exclusive(int open_exclusive);
