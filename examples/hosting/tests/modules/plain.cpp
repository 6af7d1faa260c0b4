// A shared object like any other: no module, as it lacks the entry points.
extern "C" __attribute__((visibility("default"))) int PlainFunction();

int PlainFunction() { return 1; }
