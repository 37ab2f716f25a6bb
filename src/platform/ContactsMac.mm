#include "platform/ContactsMac.h"

#include "core/AppError.h"

#import <AddressBook/AddressBook.h>
#import <Contacts/Contacts.h>

// The older interface is deprecated, but it works on machines where the newer interface hangs.
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

namespace parcelory {

namespace {

QString textOf(id value)
{
    return [value isKindOfClass:[NSString class]] ? QString::fromNSString(value) : QString();
}

void require(bool done, NSError *error)
{
    if (!done)
        throw AppError(error ? QString::fromNSString(error.localizedDescription) : QStringLiteral("no access"));
}

PlatformAddress addressOf(NSDictionary *address, NSString *label)
{
    return {.label = label ? textOf(ABLocalizedPropertyOrLabel(label)) : QString(),
            .street = textOf(address[kABAddressStreetKey]),
            .city = textOf(address[kABAddressCityKey]),
            .state = textOf(address[kABAddressStateKey]),
            .zip = textOf(address[kABAddressZIPKey]),
            .isoCountry = textOf(address[kABAddressCountryCodeKey])};
}

PlatformContact contactOf(ABPerson *record)
{
    PlatformContact person{.given = textOf([record valueForProperty:kABFirstNameProperty]),
                           .family = textOf([record valueForProperty:kABLastNameProperty]),
                           .organization = textOf([record valueForProperty:kABOrganizationProperty])};
    ABMultiValue *addresses = [record valueForProperty:kABAddressProperty];
    for (NSUInteger i = 0; i < addresses.count; ++i)
        person.addresses.append(addressOf([addresses valueAtIndex:i], [addresses labelAtIndex:i]));
    ABMultiValue *phones = [record valueForProperty:kABPhoneProperty];
    if (phones.count)
        person.phones.append(textOf([phones valueAtIndex:0]));
    ABMultiValue *emails = [record valueForProperty:kABEmailProperty];
    if (emails.count)
        person.emails.append(textOf([emails valueAtIndex:0]));
    return person;
}

PlatformContact contactOf(CNContact *contact)
{
    PlatformContact person{.given = textOf(contact.givenName),
                           .family = textOf(contact.familyName),
                           .organization = textOf(contact.organizationName)};
    for (CNLabeledValue<CNPostalAddress *> *entry in contact.postalAddresses) {
        CNPostalAddress *address = entry.value;
        NSString *label = entry.label ? [CNLabeledValue localizedStringForLabel:entry.label] : nil;
        person.addresses.append({.label = textOf(label),
                                 .street = textOf(address.street),
                                 .city = textOf(address.city),
                                 .state = textOf(address.state),
                                 .zip = textOf(address.postalCode),
                                 .isoCountry = textOf(address.ISOCountryCode)});
    }
    if (contact.phoneNumbers.count)
        person.phones.append(textOf(contact.phoneNumbers.firstObject.value.stringValue));
    if (contact.emailAddresses.count)
        person.emails.append(textOf(contact.emailAddresses.firstObject.value));
    return person;
}

} // namespace

int ContactsMac::authorizationStatus()
{
    return int([CNContactStore authorizationStatusForEntityType:CNEntityTypeContacts]);
}

bool ContactsMac::requestAccess()
{
    @autoreleasepool {
        dispatch_semaphore_t answered = dispatch_semaphore_create(0);
        __block bool isGranted = false;
        [[[CNContactStore alloc] init] requestAccessForEntityType:CNEntityTypeContacts
                                                completionHandler:^(BOOL granted, NSError *) {
                                                  isGranted = granted;
                                                  dispatch_semaphore_signal(answered);
                                                }];
        dispatch_semaphore_wait(answered, DISPATCH_TIME_FOREVER);
        return isGranted;
    }
}

bool ContactsMac::openLegacy()
{
    @autoreleasepool {
        return [ABAddressBook addressBook] != nil;
    }
}

void ContactsMac::readLegacy(const Take &take)
{
    @autoreleasepool {
        NSArray<ABPerson *> *people = [[ABAddressBook addressBook] people];
        require(people != nil, nil);
        for (ABPerson *person in people) {
            if (!take(contactOf(person)))
                return;
        }
    }
}

qsizetype ContactsMac::containerCount()
{
    @autoreleasepool {
        NSError *error = nil;
        NSArray *containers = [[[CNContactStore alloc] init] containersMatchingPredicate:nil error:&error];
        require(containers != nil, error);
        return qsizetype(containers.count);
    }
}

void ContactsMac::read(const Request &request, const Take &take)
{
    @autoreleasepool {
        CNContactFetchRequest *fetch = [[CNContactFetchRequest alloc] initWithKeysToFetch:@[
            CNContactIdentifierKey, CNContactGivenNameKey, CNContactFamilyNameKey, CNContactOrganizationNameKey,
            CNContactPostalAddressesKey, CNContactPhoneNumbersKey, CNContactEmailAddressesKey
        ]];
        fetch.unifyResults = request.isUnified;
        __block qsizetype left = request.most;
        const Take *const taker = &take;
        NSError *error = nil;
        const BOOL done = [[[CNContactStore alloc] init]
            enumerateContactsWithFetchRequest:fetch
                                        error:&error
                                   usingBlock:^(CNContact *contact, BOOL *stop) {
                                     *stop = !(*taker)(contactOf(contact)) || --left == 0;
                                   }];
        require(done, error);
    }
}

} // namespace parcelory
