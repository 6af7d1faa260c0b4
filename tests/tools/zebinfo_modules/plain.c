/* A shared object like any other: no module, as it lacks the entry points. */
int PlainFunction(void);

int PlainFunction(void) { return 1; }
