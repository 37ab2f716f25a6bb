// The functions of macOS that Parcelory calls, declared as Apple documents them, so that tools/check-newer can check
// the calls on Linux. Nothing links this.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

using Boolean = unsigned char;
using OSStatus = int32_t;
using CFIndex = long;
using CFTypeRef = const void *;
using CFAllocatorRef = const struct __CFAllocator *;
using CFStringRef = const struct __CFString *;
using CFDataRef = const struct __CFData *;
using CFBooleanRef = const struct __CFBoolean *;
using CFDictionaryRef = const struct __CFDictionary *;
using CFMutableDictionaryRef = struct __CFDictionary *;
using CFStringEncoding = uint32_t;
struct CFDictionaryKeyCallBacks;
struct CFDictionaryValueCallBacks;

constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;
extern const CFBooleanRef kCFBooleanTrue;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

void CFRelease(CFTypeRef object);
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char *text, CFStringEncoding encoding);
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks *keys,
                                                 const CFDictionaryValueCallBacks *values);
void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void *key, const void *value);
const uint8_t *CFDataGetBytePtr(CFDataRef data);
CFIndex CFDataGetLength(CFDataRef data);

constexpr OSStatus errSecSuccess = 0;
constexpr OSStatus errSecItemNotFound = -25300;
extern const CFStringRef kSecClass;
extern const CFStringRef kSecClassGenericPassword;
extern const CFStringRef kSecAttrService;
extern const CFStringRef kSecAttrAccount;
extern const CFStringRef kSecReturnData;
extern const CFStringRef kSecMatchLimit;
extern const CFStringRef kSecMatchLimitOne;
extern const CFStringRef kSecValueData;

OSStatus SecItemCopyMatching(CFDictionaryRef query, CFTypeRef *result);
OSStatus SecItemAdd(CFDictionaryRef attributes, CFTypeRef *result);
OSStatus SecItemUpdate(CFDictionaryRef query, CFDictionaryRef attributesToUpdate);
OSStatus SecItemDelete(CFDictionaryRef query);

} // extern "C"
