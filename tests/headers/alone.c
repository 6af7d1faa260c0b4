/* One public header and nothing before it; twice, for the sake of its include guard. */
#include ZEB_HEADER
#include ZEB_HEADER

typedef int ZEBNoEmptyFile;
