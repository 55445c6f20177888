/* A program without a C library: ends with the result of a call into KELUtils, 0 when there is an agent ID. */
#include "KELUtils.h"

__declspec(dllimport) void __stdcall ExitProcess(unsigned int code);

void start(void) {
  char id[64];
  ExitProcess(KE_GetAgentID(id, sizeof id));
}
