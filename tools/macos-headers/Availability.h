// Qt includes this for the version of macOS; see Security/Security.h beside this file.
#pragma once
#define MAC_OS_X_VERSION_MAX_ALLOWED 150000
#define __MAC_OS_X_VERSION_MAX_ALLOWED 150000
#define MAC_OS_X_VERSION_MIN_REQUIRED 140000
#define __MAC_OS_X_VERSION_MIN_REQUIRED 140000
