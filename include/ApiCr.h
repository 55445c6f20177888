/** @file
 * ApiCr.dll: the crypto module, for authors of one.
 *
 * KELUtils loads it from its own directory or from the product's Common folder on first use and keeps it until the
 * process ends. It calls APIcr_EncryptBuffer() and APIcr_DecryptBuffer(), from any thread, several at once.
 *
 * Key blobs are opaque zero-terminated texts of 188 base64 characters.
 */
#ifndef APICR_H
#define APICR_H

#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The errors. A module may have others of its own. */
enum {
  APICR_SUCCESS = 0,          /**< no error */
  APICR_BAD_ARGUMENT = 1,     /**< a pointer is null, or a text has the wrong length */
  APICR_BAD_LENGTH = 2,       /**< the length of the buffer is not a multiple of 16 */
  APICR_PLATFORM_FAILURE = 3, /**< the cryptography of Windows failed, or memory ran out */
  APICR_NOT_SUPPORTED = 50    /**< the module does not offer this function */
};

/** Size of a key blob in bytes, with the terminating zero. */
enum { APICR_KEY_BLOB_SIZE = 189 };

/** Encrypts a buffer in place. The same plain text and key blob must always give the same cipher text, and a buffer
 * cut at a multiple of 16 must still decrypt up to the cut. There is no space for an authentication tag: a wrong key
 * gives a wrong text, not an error.
 *
 * @param[in,out] buffer  the buffer; undefined after an error
 * @param length          its length in bytes, a multiple of 16, which may be 0; it does not change
 * @param keyBlob         the key blob
 * @param zero            always 0
 * @param[out] error      0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_EncryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error);

/** Decrypts a buffer in place that APIcr_EncryptBuffer() has encrypted. The parameters are the same.
 *
 * @param[in,out] buffer  the buffer; undefined after an error
 * @param length          its length in bytes, a multiple of 16, which may be 0; it does not change
 * @param keyBlob         the key blob
 * @param zero            always 0
 * @param[out] error      0 on success, else the reason; may be null
 */
void KE_SIBLING_CALL APIcr_DecryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error);

/* Looked up but never called by KELUtils, and required (KE_UncalledFunction): APIcr_GetVersion, APIcr_GetHash,
 * APIcr_GetHashFromFile, APIcr_GetRandomKey, APIcr_EncryptFile, APIcr_DecryptFile, APIcr_EncryptWithPublic,
 * APIcr_DecryptWithPrivate, APIcr_EncryptHash, APIcr_DecryptHash, APIcr_MakeKeys. */

#ifdef __cplusplus
}
#endif

#endif
