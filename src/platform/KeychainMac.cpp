#include "platform/Keychain.h"

#include <QUtf8StringView>
#include <QtGlobal>
#include <Security/Security.h>

#include <memory>
#include <mutex>

namespace parcelory {

namespace {

std::mutex oneAtATime;

struct Release {
    void operator()(const void *object) const { CFRelease(object); }
};
template <class Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Release>;

/// An account's item as a keychain query.
Owned<CFMutableDictionaryRef> itemOf(const QString &account)
{
    Owned<CFMutableDictionaryRef> item(
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const Owned<CFStringRef> service(CFStringCreateWithCString(nullptr, SecretStore::service, kCFStringEncodingUTF8));
    const Owned<CFStringRef> name(account.toCFString());
    CFDictionarySetValue(item.get(), kSecClass, kSecClassGenericPassword);
    CFDictionarySetValue(item.get(), kSecAttrService, service.get());
    CFDictionarySetValue(item.get(), kSecAttrAccount, name.get());
    return item;
}

} // namespace

std::optional<QString> Keychain::get(const QString &account)
{
    const std::lock_guard lock(oneAtATime);
    const auto query = itemOf(account);
    CFDictionarySetValue(query.get(), kSecReturnData, kCFBooleanTrue);
    CFDictionarySetValue(query.get(), kSecMatchLimit, kSecMatchLimitOne);
    CFTypeRef found = nullptr;
    if (SecItemCopyMatching(query.get(), &found) != errSecSuccess || !found)
        return std::nullopt;
    const Owned<CFDataRef> data(static_cast<CFDataRef>(found));
    const QUtf8StringView text(CFDataGetBytePtr(data.get()), CFDataGetLength(data.get()));
    return text.isValidUtf8() ? std::optional(text.toString()) : std::nullopt;
}

void Keychain::set(const QString &value, const QString &account)
{
    const std::lock_guard lock(oneAtATime);
    const auto item = itemOf(account);
    const Owned<CFDataRef> data(value.toUtf8().toCFData());
    const Owned<CFMutableDictionaryRef> change(
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(change.get(), kSecValueData, data.get());
    // An update keeps who may read the item, so the user is not asked again.
    OSStatus status = SecItemUpdate(item.get(), change.get());
    if (status == errSecItemNotFound) {
        CFDictionarySetValue(item.get(), kSecValueData, data.get());
        status = SecItemAdd(item.get(), nullptr);
    }
    if (status != errSecSuccess)
        qWarning("Parcelory: the keychain did not keep an item (%d)", int(status));
}

} // namespace parcelory
