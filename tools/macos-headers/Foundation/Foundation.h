// The classes of macOS that Parcelory uses, declared as Apple documents them; see Security/Security.h beside this file.
#pragma once

#include <cstddef>

using BOOL = bool;
using NSInteger = long;
using NSUInteger = unsigned long;
struct NSFastEnumerationState;
#define nil nullptr

__attribute__((objc_root_class))
@interface NSObject
+ (instancetype)alloc;
- (instancetype)init;
+ (Class)class;
- (BOOL)isKindOfClass:(Class)aClass;
@end

@interface NSString : NSObject
@end

@interface NSError : NSObject
@property(readonly, copy) NSString *localizedDescription;
@end

@interface NSArray<ObjectType> : NSObject
@property(readonly) NSUInteger count;
@property(nonatomic, readonly) ObjectType firstObject;
+ (instancetype)arrayWithObjects:(const ObjectType[])objects count:(NSUInteger)count;
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState *)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)length;
@end

@interface NSDictionary<KeyType, ObjectType> : NSObject
- (ObjectType)objectForKeyedSubscript:(KeyType)key;
@end

extern "C" {
struct dispatch_semaphore_s;
typedef dispatch_semaphore_s *dispatch_semaphore_t;
typedef unsigned long long dispatch_time_t;
constexpr dispatch_time_t DISPATCH_TIME_FOREVER = ~0ULL;
constexpr dispatch_time_t DISPATCH_TIME_NOW = 0;
constexpr unsigned long long NSEC_PER_MSEC = 1000000;
dispatch_semaphore_t dispatch_semaphore_create(long value);
long dispatch_semaphore_signal(dispatch_semaphore_t semaphore);
long dispatch_semaphore_wait(dispatch_semaphore_t semaphore, dispatch_time_t timeout);
dispatch_time_t dispatch_time(dispatch_time_t when, long long delta);
}
