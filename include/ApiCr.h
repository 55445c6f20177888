/** @file
 * ApiCr.dll: the crypto module, for authors of one.
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

/** The errors. */
enum {
  APICR_SUCCESS = 0,          /**< it went well */
  APICR_BAD_ARGUMENT = 1,     /**< a pointer is null, a text is empty or a size is wrong */
  APICR_BAD_LENGTH = 2,       /**< the length of an enciphered buffer is not a multiple of 16 */
  APICR_PLATFORM_FAILURE = 3, /**< the platform's cryptography failed, or memory ran out */
  APICR_FILE_FAILURE = 4,     /**< a file could not be opened, read, written or put in place */
  APICR_NOT_AUTHENTIC = 5,    /**< an enciphered file is damaged, cut, or was enciphered with another key blob */
  APICR_NOT_SUPPORTED = 50    /**< the module does not offer this function */
};

/** Sizes in bytes. */
enum {
  APICR_HASH_SIZE = 32,     /**< of a hash */
  APICR_KEY_BLOB_SIZE = 189 /**< of a key blob, with the terminating zero */
};

/** Version of the module.
 *
 * @return major number in the high, minor number in the low 16 bits
 */
uint32_t KE_SIBLING_CALL APIcr_GetVersion(void);

/** SHA-256 (FIPS 180-4) of a buffer.
 *
 * @param data         the buffer
 * @param length       its length in bytes
 * @param[out] hash    receives APICR_HASH_SIZE bytes
 * @param[out] error  0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_GetHash(const void* data, uint32_t length, uint8_t* hash, int32_t* error);

/** SHA-256 (FIPS 180-4) of a file's content.
 *
 * @param path         the file
 * @param[out] hash    receives APICR_HASH_SIZE bytes
 * @param[out] error  0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_GetHashFromFile(const char* path, uint8_t* hash, int32_t* error);

/** A fresh random key blob.
 *
 * @param[out] keyBlob  receives the key blob, with its terminating zero
 * @param keyBlobSize   size of keyBlob in bytes, at least APICR_KEY_BLOB_SIZE
 * @param[out] error    0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_GetRandomKey(char* keyBlob, uint32_t keyBlobSize, int32_t* error);

/** Enciphers a buffer in place. The same plain text and key blob must always give the same cipher text, and a buffer
 * cut at a multiple of 16 must still decipher up to the cut. There is no room for an authentication tag: a wrong key
 * gives a wrong text, not an error.
 *
 * @param[in,out] buffer  the buffer
 * @param length          its length in bytes, a multiple of 16, which may be 0; it does not change
 * @param keyBlob         the key blob
 * @param zero            always 0
 * @param[out] error      0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_EncryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error);

/** Deciphers a buffer in place that APIcr_EncryptBuffer() has enciphered.
 *
 * @param[in,out] buffer  the buffer
 * @param length          its length in bytes, a multiple of 16, which may be 0; it does not change
 * @param keyBlob         the key blob
 * @param zero            always 0
 * @param[out] error      0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_DecryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error);

/** Enciphers a file.
 *
 * @param source       the plain file
 * @param target       the enciphered file, replaced only when all went well
 * @param keyBlob      the key blob
 * @param[out] error  0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_EncryptFile(const char* source, const char* target, const char* keyBlob, int32_t* error);

/** Deciphers a file that APIcr_EncryptFile() has enciphered.
 *
 * @param source       the enciphered file
 * @param target       the plain file, replaced only when all went well
 * @param keyBlob      the key blob
 * @param[out] error  0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_DecryptFile(const char* source, const char* target, const char* keyBlob, int32_t* error);

/** Enciphers with a public key.
 *
 * @param source                the input
 * @param sourceLength          its length in bytes
 * @param[out] target           receives the output
 * @param[in,out] targetLength  on entry the size of target in bytes; receives the length of the output
 * @param publicKeyBlob         the key
 * @param[out] error            0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_EncryptWithPublic(const void* source, uint32_t sourceLength, void* target,
                                             uint32_t* targetLength, const char* publicKeyBlob, int32_t* error);

/** Deciphers with a private key.
 *
 * @param source                the input
 * @param sourceLength          its length in bytes
 * @param[out] target           receives the output
 * @param[in,out] targetLength  on entry the size of target in bytes; receives the length of the output
 * @param privateKeyBlob        the key
 * @param[out] error            0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_DecryptWithPrivate(const void* source, uint32_t sourceLength, void* target,
                                              uint32_t* targetLength, const char* privateKeyBlob, int32_t* error);

/** Enciphers a hash with a private key.
 *
 * @param hash                  APICR_HASH_SIZE bytes
 * @param[out] target           receives the output
 * @param[in,out] targetLength  on entry the size of target in bytes; receives the length of the output
 * @param privateKeyBlob        the key
 * @param[out] error            0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_EncryptHash(const uint8_t* hash, void* target, uint32_t* targetLength,
                                       const char* privateKeyBlob, int32_t* error);

/** Deciphers a hash with a public key.
 *
 * @param source         the input
 * @param sourceLength   its length in bytes
 * @param[out] hash      receives APICR_HASH_SIZE bytes
 * @param publicKeyBlob  the key
 * @param[out] error     0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_DecryptHash(const void* source, uint32_t sourceLength, uint8_t* hash,
                                       const char* publicKeyBlob, int32_t* error);

/** Makes a pair of keys.
 *
 * @param[out] publicKeyBlob   receives the public key
 * @param publicKeyBlobSize    size of publicKeyBlob in bytes
 * @param[out] privateKeyBlob  receives the private key
 * @param privateKeyBlobSize   size of privateKeyBlob in bytes
 * @param[out] error           0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_MakeKeys(char* publicKeyBlob, uint32_t publicKeyBlobSize, char* privateKeyBlob,
                                    uint32_t privateKeyBlobSize, int32_t* error);

#ifdef __cplusplus
}
#endif

#endif
