/* ApiCr.dll: the crypto module, for authors of one.
 *
 * KELUtils loads it from its own directory or from the product's Common folder on first use and keeps it until the
 * process ends. All 13 functions must be there; KELUtils itself calls only APIcr_EncryptBuffer and APIcr_DecryptBuffer,
 * from any thread, several at once.
 *
 * Errors: every function but APIcr_GetVersion takes a pointer to a 32-bit error result, which may be null. It receives
 * 0 on success, else one of the numbers below or one of the module's own. A function that fails leaves its output
 * undefined.
 *
 * Key blobs are opaque zero-terminated texts of 188 base64 characters.
 */
#ifndef APICR_H
#define APICR_H

#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
  APICR_SUCCESS = 0,
  APICR_BAD_ARGUMENT = 1,     /* a pointer is null, a text is empty or a size is wrong */
  APICR_BAD_LENGTH = 2,       /* the length of an enciphered buffer is not a multiple of 16 */
  APICR_PLATFORM_FAILURE = 3, /* the platform's cryptography failed, or memory ran out */
  APICR_FILE_FAILURE = 4,     /* a file could not be opened, read, written or put in place */
  APICR_NOT_AUTHENTIC = 5,    /* an enciphered file is damaged, cut, or was enciphered with another key blob */
  APICR_NOT_SUPPORTED = 50    /* the module does not offer this function */
};

enum { APICR_HASH_SIZE = 32, APICR_KEY_BLOB_SIZE = 189 /* with the terminating zero */ };

/* Version of the module: major number in the high, minor number in the low 16 bits. */
uint32_t KE_SIBLING_CALL APIcr_GetVersion(void);

/* SHA-256 (FIPS 180-4) of a buffer or of a file's content; hash receives APICR_HASH_SIZE bytes. */
void KE_SIBLING_CALL APIcr_GetHash(const void* data, uint32_t length, uint8_t* hash, int32_t* error);
void KE_SIBLING_CALL APIcr_GetHashFromFile(const char* path, uint8_t* hash, int32_t* error);

/* A fresh random key blob, with its terminating zero; keyBlobSize must be at least APICR_KEY_BLOB_SIZE. */
void KE_SIBLING_CALL APIcr_GetRandomKey(char* keyBlob, uint32_t keyBlobSize, int32_t* error);

/* Enciphers or deciphers a buffer in place. The length is a multiple of 16 and may be 0; it does not change. The fourth
 * argument is always 0. The same plain text and key blob must always give the same cipher text, and a buffer cut at a
 * multiple of 16 must still decipher up to the cut. There is no room for an authentication tag: a wrong key gives a
 * wrong text, not an error. */
void KE_SIBLING_CALL APIcr_EncryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error);
void KE_SIBLING_CALL APIcr_DecryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error);

/* Enciphers or deciphers the file source into the file target, which is replaced only when all went well. */
void KE_SIBLING_CALL APIcr_EncryptFile(const char* source, const char* target, const char* keyBlob, int32_t* error);
void KE_SIBLING_CALL APIcr_DecryptFile(const char* source, const char* target, const char* keyBlob, int32_t* error);

/* Public-key functions. source and sourceLength give the input; target receives the output and *targetLength, on entry
 * the size of target, its length. */
void KE_SIBLING_CALL APIcr_EncryptWithPublic(const void* source, uint32_t sourceLength, void* target,
                                             uint32_t* targetLength, const char* publicKeyBlob, int32_t* error);
void KE_SIBLING_CALL APIcr_DecryptWithPrivate(const void* source, uint32_t sourceLength, void* target,
                                              uint32_t* targetLength, const char* privateKeyBlob, int32_t* error);
void KE_SIBLING_CALL APIcr_EncryptHash(const uint8_t* hash, void* target, uint32_t* targetLength,
                                       const char* privateKeyBlob, int32_t* error);
void KE_SIBLING_CALL APIcr_DecryptHash(const void* source, uint32_t sourceLength, uint8_t* hash,
                                       const char* publicKeyBlob, int32_t* error);
void KE_SIBLING_CALL APIcr_MakeKeys(char* publicKeyBlob, uint32_t publicKeyBlobSize, char* privateKeyBlob,
                                    uint32_t privateKeyBlobSize, int32_t* error);

#ifdef __cplusplus
}
#endif

#endif
