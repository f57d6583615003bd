// Keeps a Wine session alive: does nothing until the session is ended. Wine's services, which would otherwise start and
// end with every program, hold that program's output open for seconds.
#include <windows.h>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    Sleep(INFINITE);
    return 0;
}
