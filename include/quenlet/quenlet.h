#pragma once

#include <stddef.h>
#include <stdint.h>

#include "quenlet/Export.h"

/* The user's agent for programs in C, and in languages that can call C. The agent keeps values
 * about the owner of the device that programs donate, and makes a card of them. It serves only
 * entitled programs.
 *
 *   quenlet_client *agent = quenlet_client_new(0);
 *   quenlet_error error;
 *   quenlet_values *card = quenlet_client_fetch_card(agent, &error);
 *   if (card == NULL) fprintf(stderr, "%s\n", error.sentence);
 *   for (size_t i = 0; i < quenlet_values_count(card); ++i) {
 *     const quenlet_value *value = quenlet_values_at(card, i);
 *     if (quenlet_value_kind(value) == QUENLET_PHONE) {
 *       puts(quenlet_value_text(value, QUENLET_TEXT));
 *     }
 *   }
 *   quenlet_values_free(card);
 *   quenlet_client_free(agent);
 *
 * All text is UTF-8 that ends with a null character. Functions copy what they are given. What a
 * function called "new", "copy" or "fetch" returns belongs to the caller, who frees it; all other
 * pointers belong to what they were taken from and are good until that is changed or freed. Freeing
 * NULL does nothing. No function throws or ends the program. An `error` may be NULL. After a fork
 * the child must not use or free its parent's client.
 *
 * These functions keep their meaning as long as the library is called libquenlet.so.0.
 */

#ifdef __cplusplus
extern "C" {
#endif

/* Later versions may have further ones: treat those that you do not know as QUENLET_FAILED. */
typedef enum quenlet_status {
  QUENLET_OK = 0,
  QUENLET_FAILED = 1,
  QUENLET_NO_AGENT = 2,
  /* The agent may have done what it was asked; everything may be repeated. */
  QUENLET_CONNECTION_BROKEN = 3,
  QUENLET_TIMED_OUT = 4,
  QUENLET_NOT_ENTITLED = 5,
  /* The program's entitlements name the bundles that it may change, and this is not one. */
  QUENLET_BUNDLE_NOT_ALLOWED = 6,
  QUENLET_DONATIONS_DISABLED = 7,
  QUENLET_INVALID_ARGUMENT = 8,
  /* Or, in a donation, text that no file can hold. */
  QUENLET_TOO_LARGE = 9,
  QUENLET_OUT_OF_MEMORY = 10
} quenlet_status;

/* By value: nothing to free. */
typedef struct quenlet_error {
  quenlet_status status;
  /* What happened in the agent's own terms: the code is one of the domain's. */
  int64_t code;
  char domain[64];
  /* For people; without donated values. Both texts are cut short if they are longer. */
  char sentence[440];
} quenlet_error;

/* Values: the entries of a card, or donations. For one thread at a time. */

typedef struct quenlet_value quenlet_value;
typedef struct quenlet_values quenlet_values;

typedef enum quenlet_kind {
  QUENLET_NO_KIND = 0,
  QUENLET_NAME = 1,
  QUENLET_EMAIL = 2,
  QUENLET_PHONE = 3,
  QUENLET_POSTAL = 4,
  QUENLET_IMAGE = 5
} quenlet_kind;

typedef enum quenlet_text {
  /* E-mail address or phone number itself. */
  QUENLET_TEXT = 0,
  /* E-mail addresses, phone numbers and postal addresses have one, as in "home" or "work". */
  QUENLET_LABEL = 1,
  /* Parts of a name. */
  QUENLET_NAME_PREFIX = 10,
  QUENLET_GIVEN_NAME = 11,
  QUENLET_MIDDLE_NAME = 12,
  QUENLET_FAMILY_NAME = 13,
  QUENLET_NAME_SUFFIX = 14,
  QUENLET_NICKNAME = 15,
  /* Parts of a postal address; the street may have several lines. */
  QUENLET_STREET = 20,
  QUENLET_SUB_LOCALITY = 21,
  QUENLET_CITY = 22,
  QUENLET_SUB_ADMINISTRATIVE_AREA = 23,
  QUENLET_STATE = 24,
  QUENLET_POSTAL_CODE = 25,
  QUENLET_COUNTRY = 26,
  QUENLET_ISO_COUNTRY_CODE = 27,
  /* Every donation has these: the donor, as in "com.example.mail", and an identifier of its own,
   * as in "com.example.mail:account-1:email"; both are logged and must not be personal. Donations
   * of one cluster, if they have any, can be rejected together. */
  QUENLET_BUNDLE = 30,
  QUENLET_IDENTIFIER = 31,
  QUENLET_CLUSTER = 32
} quenlet_text;

typedef enum quenlet_date { QUENLET_DONATION_DATE = 0, QUENLET_EXPIRATION_DATE = 1 } quenlet_date;

/* Creates an empty list. NULL if memory is exhausted. */
QUENLET_API quenlet_values* quenlet_values_new(void);
QUENLET_API quenlet_values* quenlet_values_copy(const quenlet_values* values);
QUENLET_API void quenlet_values_free(quenlet_values* values);
QUENLET_API size_t quenlet_values_count(const quenlet_values* values);
/* The value with that index, from 0; NULL beyond the last one. */
QUENLET_API const quenlet_value* quenlet_values_at(const quenlet_values* values, size_t index);
/* A further value, which is donated now and expires in 90 days. NULL for an unknown kind, or if
 * memory is exhausted. */
QUENLET_API quenlet_value* quenlet_values_add(quenlet_values* values, quenlet_kind kind);

QUENLET_API quenlet_kind quenlet_value_kind(const quenlet_value* value);
/* NULL if it is absent or not of this kind of value. In names and clusters an empty text differs
 * from an absent one. */
QUENLET_API const char* quenlet_value_text(const quenlet_value* value, quenlet_text which);
/* The bytes of an image file and their number; NULL and 0 for other kinds. */
QUENLET_API const void* quenlet_value_image(const quenlet_value* value, size_t* size);
/* In seconds since 1970-01-01 00:00:00 UTC; NaN for a value without an origin, as the name of a
 * card. */
QUENLET_API double quenlet_value_date(const quenlet_value* value, quenlet_date which);
/* All return QUENLET_INVALID_ARGUMENT and change nothing if it is not of this kind of value. NULL
 * for a text that is absent. */
QUENLET_API quenlet_status quenlet_value_set_text(quenlet_value* value, quenlet_text which,
                                                  const char* text);
QUENLET_API quenlet_status quenlet_value_set_image(quenlet_value* value, const void* bytes,
                                                   size_t size);
QUENLET_API quenlet_status quenlet_value_set_date(quenlet_value* value, quenlet_date which,
                                                  double seconds);

/* The agent. A client may be used by several threads, and connects when it is used first, and anew
 * after the agent was restarted. It starts no thread. */

typedef struct quenlet_client quenlet_client;

/* `time_limit` is for connecting and for each answer, in milliseconds; 0 means 25,000. NULL if
 * memory is exhausted. */
QUENLET_API quenlet_client* quenlet_client_new(unsigned int time_limit);
/* Callbacks that still wait are called with QUENLET_CONNECTION_BROKEN before this returns; what
 * they begin is not done. Not to be called in a callback. */
QUENLET_API void quenlet_client_free(quenlet_client* client);

/* These wait for the agent. A fetch returns NULL if it fails. */
QUENLET_API quenlet_values* quenlet_client_fetch_card(quenlet_client* client, quenlet_error* error);
QUENLET_API quenlet_values* quenlet_client_fetch_donations(quenlet_client* client,
                                                           quenlet_error* error);
/* Donates all values or, if it fails, none. Returns once they are on the disk. */
QUENLET_API quenlet_status quenlet_client_donate(quenlet_client* client,
                                                 const quenlet_values* donations,
                                                 quenlet_error* error);
/* Take donations back: those with these identifiers, or all of a donor. */
QUENLET_API quenlet_status quenlet_client_remove(quenlet_client* client,
                                                 const char* const* identifiers, size_t count,
                                                 quenlet_error* error);
QUENLET_API quenlet_status quenlet_client_remove_bundle(quenlet_client* client, const char* bundle,
                                                        quenlet_error* error);
/* Remove what has the same content as a donation, or as those of a cluster, and keep it away. */
QUENLET_API quenlet_status quenlet_client_reject(quenlet_client* client, const char* identifier,
                                                 quenlet_error* error);
QUENLET_API quenlet_status quenlet_client_reject_cluster(quenlet_client* client,
                                                         const char* cluster, quenlet_error* error);

/* The same without waiting, for programs with an event loop: poll quenlet_client_fd() and call
 * quenlet_client_dispatch() whenever it is readable; callbacks run there, each once. Either
 * `values` or `error` is NULL; both are good until the callback returns. Callbacks may use the
 * client, but must not dispatch or free it. Each function returns a number for
 * quenlet_client_cancel(), and 0 if memory is exhausted or an argument is NULL: then the callback
 * is not called. It is called outside of a dispatch only if the system has run out of descriptors.
 * Connecting may wait for the agent to accept, within the time limit. */

typedef void (*quenlet_values_callback)(const quenlet_values* values, const quenlet_error* error,
                                        void* data);
/* `error` is NULL on success. */
typedef void (*quenlet_done_callback)(const quenlet_error* error, void* data);

/* -1 when the system has no descriptor left. Belongs to the client. */
QUENLET_API int quenlet_client_fd(quenlet_client* client, quenlet_error* error);
/* Does not wait. On one thread at a time. */
QUENLET_API void quenlet_client_dispatch(quenlet_client* client);
QUENLET_API uint64_t quenlet_client_fetch_card_async(quenlet_client* client,
                                                     quenlet_values_callback callback, void* data);
/* Calls back with the card, and again whenever it has become another one, or cannot be had for
 * another reason, until it is cancelled. That an agent ends is not told. */
QUENLET_API uint64_t quenlet_client_on_card_change(quenlet_client* client,
                                                   quenlet_values_callback callback, void* data);
QUENLET_API uint64_t quenlet_client_fetch_donations_async(quenlet_client* client,
                                                          quenlet_values_callback callback,
                                                          void* data);
QUENLET_API uint64_t quenlet_client_donate_async(quenlet_client* client,
                                                 const quenlet_values* donations,
                                                 quenlet_done_callback callback, void* data);
QUENLET_API uint64_t quenlet_client_remove_async(quenlet_client* client,
                                                 const char* const* identifiers, size_t count,
                                                 quenlet_done_callback callback, void* data);
/* The callback is not called any more, unless another thread that dispatches is just calling it.
 * The agent may do what it was asked all the same. */
QUENLET_API void quenlet_client_cancel(quenlet_client* client, uint64_t call);

/* Donor extensions: programs that the agent starts and asks. */

typedef struct quenlet_extension {
  size_t size; /* sizeof(quenlet_extension) */
  void* data;
  /* Sets the new expiration date of a donation; a date in the past takes the donation back. If it
   * fails, the donation stays as it is until it expires. */
  quenlet_status (*renew)(const quenlet_value* donation, double* expiration, void* data);
  /* All current donations, which the caller frees; NULL if that fails. `reason` is 1 when donations
   * have just been enabled. */
  quenlet_values* (*all_donations)(uint64_t reason, void* data);
} quenlet_extension;

/* Takes the agent's socket from the standard input and answers until the agent ends it. Returns the
 * exit status for main(): 0, or 2 when it was not the agent that started the program. */
QUENLET_API int quenlet_extension_run(const quenlet_extension* extension);

#ifdef __cplusplus
}
#endif
