// The JPEG library's headers, which need others before them.
#ifndef THUMBNAILS_SUPPORT_JPEG_LIBRARY_H
#define THUMBNAILS_SUPPORT_JPEG_LIBRARY_H

// clang-format off
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#endif
