#pragma once

#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t transaction_code_t;
typedef uint32_t binder_flags_t;

enum {
    FIRST_CALL_TRANSACTION = 0x00000001,
    LAST_CALL_TRANSACTION = 0x00ffffff,
};

enum {
    FLAG_ONEWAY = 0x01,
};

struct AIBinder_Class;
typedef struct AIBinder_Class AIBinder_Class;

struct AIBinder_Weak;
typedef struct AIBinder_Weak AIBinder_Weak;

struct AIBinder_DeathRecipient;
typedef struct AIBinder_DeathRecipient AIBinder_DeathRecipient;

typedef void* (*AIBinder_Class_onCreate)(void* args);
typedef void (*AIBinder_Class_onDestroy)(void* userData);
typedef binder_status_t (*AIBinder_Class_onTransact)(AIBinder* binder, transaction_code_t code,
                                                     const AParcel* in, AParcel* out);
typedef binder_status_t (*AIBinder_onDump)(AIBinder* binder, int fd, const char** args,
                                           uint32_t numArgs);

/* The class lives for the rest of the process. */
__attribute__((warn_unused_result)) AIBinder_Class* AIBinder_Class_define(
        const char* interfaceDescriptor, AIBinder_Class_onCreate onCreate,
        AIBinder_Class_onDestroy onDestroy, AIBinder_Class_onTransact onTransact);
void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump);
const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz);

/* Returns a local binder with one strong reference owned by the caller. */
__attribute__((warn_unused_result)) AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args);

bool AIBinder_isRemote(const AIBinder* binder);
bool AIBinder_isAlive(const AIBinder* binder);
binder_status_t AIBinder_ping(AIBinder* binder);
binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs);

typedef void (*AIBinder_DeathRecipient_onBinderDied)(void* cookie);
typedef void (*AIBinder_DeathRecipient_onBinderUnlinked)(void* cookie);

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie);
binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie);

pid_t AIBinder_getCallingPid(void);
uid_t AIBinder_getCallingUid(void);
bool AIBinder_isHandlingTransaction(void);

void AIBinder_incStrong(AIBinder* binder);
void AIBinder_decStrong(AIBinder* binder);
int32_t AIBinder_debugGetRefCount(AIBinder* binder);

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz);
const AIBinder_Class* AIBinder_getClass(AIBinder* binder);
void* AIBinder_getUserData(AIBinder* binder);

/* Creates *in with the interface token of the binder's class already written. */
binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in);
/* Always takes ownership of *in (and sets it to null); on success *out is the reply. */
binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags);

__attribute__((warn_unused_result)) AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder);
void AIBinder_Weak_delete(AIBinder_Weak* weakBinder);
__attribute__((warn_unused_result)) AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder);
AIBinder_Weak* AIBinder_Weak_clone(const AIBinder_Weak* weak);

__attribute__((warn_unused_result)) AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onBinderDied);
void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked);
void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient);

bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs);
bool AIBinder_Weak_lt(const AIBinder_Weak* lhs, const AIBinder_Weak* rhs);

#ifdef __cplusplus
}
#endif
