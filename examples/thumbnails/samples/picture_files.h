// Writes drawings as files. All throw std::runtime_error when a file cannot be written.
#ifndef THUMBNAILS_SAMPLES_PICTURE_FILES_H
#define THUMBNAILS_SAMPLES_PICTURE_FILES_H

#include <filesystem>

#include "samples/drawings.h"

namespace examples {

void writePpm(const std::filesystem::path& path, const Drawing& drawing);       // P6
void writeDeepPpm(const std::filesystem::path& path, const Drawing& drawing);   // P6 of 16 bits
void writePlainPpm(const std::filesystem::path& path, const Drawing& drawing);  // P3

enum class JpegKind { baseline, progressive, grey };

void writeJpeg(const std::filesystem::path& path, const Drawing& drawing, int quality,
               JpegKind kind);

}  // namespace examples

#endif
