// KEPLPMNG.exe: stands in for the plug-in manager. It runs no plug-in, but tells in a log how it was started.
#include <windows.h>

#include "standin/stand_in.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) { return standin::NoteAndWait(); }
