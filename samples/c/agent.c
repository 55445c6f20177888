/* KELUtils from C, linked: reads the agent ID, encrypts a setting, schedules a job.
 *
 * Build it with the CMakeLists.txt in this folder, or by hand:
 *   gcc -m32 -o linked_agent.exe agent.c $(pkg-config --cflags --libs KELUtils)
 *
 * Windows loads KELUtils.dll when the program starts, from the program's own folder or the search path. The library
 * finds the product from the folder that it was loaded from: install the program in the product's folder KELUtils, next
 * to the DLL; do not copy the DLL to the program. (A program elsewhere in the product loads the DLL at run time: see the
 * C++ sample.)
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KELUtils.h"

/* Prints which call failed, and its code, which KELUtils.h explains. Returns whether the call succeeded. */
static int succeeded(const char* call, KE_RESULT result) {
  if (result != KE_SUCCESS) fprintf(stderr, "%s: error %lu\n", call, (unsigned long)result);
  return result == KE_SUCCESS;
}

/* A getter needs a buffer that is larger than its value, and does not return the value's length: begin with a size that
 * is enough for any usual value, and increase it after KE_BUFFER_TOO_SMALL. */
static int show_agent_id(void) {
  KE_RESULT result = KE_BUFFER_TOO_SMALL;
  int32_t size;
  for (size = 64; result == KE_BUFFER_TOO_SMALL && size <= 65536; size *= 4) {
    char* id = (char*)malloc((size_t)size);
    if (id == NULL) return 0;
    result = KE_GetAgentID(id, size);
    if (result == KE_SUCCESS) printf("agent ID: %s\n", id);
    free(id);
  }
  if (result == KE_STORE_UNUSABLE) {
    fprintf(stderr, "this computer has no agent ID yet\n");
    return 0;
  }
  return succeeded("KE_GetAgentID", result);
}

/* With a null output KE_EncryptSetting returns the required size. Its output has no terminating zero. */
static int show_setting(const char* text) {
  int32_t size = 0;
  char* setting;
  int32_t length = (int32_t)strlen(text);
  KE_RESULT result = KE_EncryptSetting(text, length, NULL, &size);
  if (result != KE_BUFFER_TOO_SMALL) return succeeded("KE_EncryptSetting", result);
  setting = (char*)malloc((size_t)size + 1);
  if (setting == NULL) return 0;
  result = KE_EncryptSetting(text, length, setting, &size);
  if (result == KE_SUCCESS) {
    setting[size] = '\0';
    printf("setting of %ld characters: %s\n", (long)size, setting);
  }
  free(setting);
  return succeeded("KE_EncryptSetting", result);
}

/* Every twelve hours, on all days. A second call redefines the job of that ID. */
static int schedule_job(void) {
  const int32_t task_id = 9001, period_minutes = 12 * 60, random_weekday = 0;
  if (!succeeded("KE_SetPeriodicTask",
                 KE_SetPeriodicTask("KEPLPMNG", "SAMPLE", "-check", task_id, period_minutes, random_weekday)))
    return 0;
  printf("job %ld is scheduled\n", (long)task_id);
  return 1;
}

int main(void) { return show_agent_id() && show_setting("secret") && schedule_job() ? EXIT_SUCCESS : EXIT_FAILURE; }
