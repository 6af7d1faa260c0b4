/* What the module publishes and the host calls. */
#ifndef GREETING_H
#define GREETING_H

#include <zeb/zeb.h>

#define GREETING_INTERFACE "GreetingInterface"

/* The greeting as an atom; the caller owns one reference. */
typedef ZEBString* (*GreetingProc)(void);

#endif
