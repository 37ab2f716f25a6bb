// See Security/Security.h beside this file.
#pragma once

#import <Foundation/Foundation.h>

extern NSString *const kABFirstNameProperty;
extern NSString *const kABLastNameProperty;
extern NSString *const kABOrganizationProperty;
extern NSString *const kABAddressProperty;
extern NSString *const kABPhoneProperty;
extern NSString *const kABEmailProperty;
extern NSString *const kABAddressStreetKey;
extern NSString *const kABAddressCityKey;
extern NSString *const kABAddressStateKey;
extern NSString *const kABAddressZIPKey;
extern NSString *const kABAddressCountryCodeKey;
extern "C" NSString *ABLocalizedPropertyOrLabel(NSString *propertyOrLabel);

@interface ABRecord : NSObject
- (id)valueForProperty:(NSString *)property;
@end

@interface ABPerson : ABRecord
@end

@interface ABMultiValue : NSObject
- (NSUInteger)count;
- (id)valueAtIndex:(NSUInteger)index;
- (NSString *)labelAtIndex:(NSUInteger)index;
@end

@interface ABAddressBook : NSObject
+ (ABAddressBook *)addressBook;
- (NSArray *)people;
@end
