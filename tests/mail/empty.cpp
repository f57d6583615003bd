// A mapi32.dll without the function that is looked for.
extern "C" unsigned long MAPILogoff() { return 0; }
