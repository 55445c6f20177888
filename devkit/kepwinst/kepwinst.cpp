// KepWInst.exe: stands in for the installer helper. It installs nothing, but tells in a log how it was started.
#include <windows.h>

#include "standin/stand_in.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) { return standin::NoteAndWait(); }
