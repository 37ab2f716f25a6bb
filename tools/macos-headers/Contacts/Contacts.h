// See Security/Security.h beside this file.
#pragma once

#import <Foundation/Foundation.h>

typedef NSInteger CNAuthorizationStatus;
enum CNEntityType : NSInteger { CNEntityTypeContacts };

extern NSString *const CNContactIdentifierKey;
extern NSString *const CNContactGivenNameKey;
extern NSString *const CNContactFamilyNameKey;
extern NSString *const CNContactOrganizationNameKey;
extern NSString *const CNContactPostalAddressesKey;
extern NSString *const CNContactPhoneNumbersKey;
extern NSString *const CNContactEmailAddressesKey;

@interface CNPostalAddress : NSObject
@property(readonly, copy, nonatomic) NSString *street;
@property(readonly, copy, nonatomic) NSString *city;
@property(readonly, copy, nonatomic) NSString *state;
@property(readonly, copy, nonatomic) NSString *postalCode;
@property(readonly, copy, nonatomic) NSString *ISOCountryCode;
@end

@interface CNPhoneNumber : NSObject
@property(readonly, copy, nonatomic) NSString *stringValue;
@end

@interface CNLabeledValue<ValueType> : NSObject
@property(readonly, copy, nonatomic) NSString *label;
@property(readonly, copy, nonatomic) ValueType value;
+ (NSString *)localizedStringForLabel:(NSString *)label;
@end

@interface CNContact : NSObject
@property(readonly, copy, nonatomic) NSString *givenName;
@property(readonly, copy, nonatomic) NSString *familyName;
@property(readonly, copy, nonatomic) NSString *organizationName;
@property(readonly, copy, nonatomic) NSArray<CNLabeledValue<CNPostalAddress *> *> *postalAddresses;
@property(readonly, copy, nonatomic) NSArray<CNLabeledValue<CNPhoneNumber *> *> *phoneNumbers;
@property(readonly, copy, nonatomic) NSArray<CNLabeledValue<NSString *> *> *emailAddresses;
@end

@interface CNContactFetchRequest : NSObject
- (instancetype)initWithKeysToFetch:(NSArray *)keysToFetch;
@property(nonatomic) BOOL unifyResults;
@end

@interface CNContactStore : NSObject
+ (CNAuthorizationStatus)authorizationStatusForEntityType:(CNEntityType)entityType;
- (void)requestAccessForEntityType:(CNEntityType)entityType
                 completionHandler:(void (^)(BOOL granted, NSError *error))completionHandler;
- (NSArray *)containersMatchingPredicate:(id)predicate error:(NSError **)error;
- (BOOL)enumerateContactsWithFetchRequest:(CNContactFetchRequest *)fetchRequest
                                    error:(NSError **)error
                               usingBlock:(void (^)(CNContact *contact, BOOL *stop))block;
@end
