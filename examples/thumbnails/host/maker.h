// Makes the thumbnails of pictures, from the cache as far as it goes.
#ifndef THUMBNAILS_HOST_MAKER_H
#define THUMBNAILS_HOST_MAKER_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <list>
#include <string>
#include <vector>

#include "common/support/event_counter.h"
#include "common/support/services.h"
#include "host/options.h"
#include "host/picture_cache.h"
#include "host/picture_modules.h"

namespace examples {

// What was done so far, by all passes together.
struct Tallies {
  Lookups thumbnails;
  Lookups pictures;
  uint64_t evictions = 0;
  uint64_t filesWritten = 0;
  uint64_t bytesWritten = 0;
  std::chrono::nanoseconds saved{};  // what making the hits again would have taken
};

// A picture or a thumbnail that there is not, and why.
struct Problem {
  std::filesystem::path path;
  std::string reason;
  bool pictureIsBad;  // else the thumbnail could not be written
};

class ThumbnailMaker {
 public:
  // The arguments must outlive this object. Throws std::bad_alloc.
  ThumbnailMaker(const Services& services, const PictureModules& modules, const Options& options);

  ThumbnailMaker(const ThumbnailMaker&) = delete;
  ThumbnailMaker& operator=(const ThumbnailMaker&) = delete;

  // Writes a picture's thumbnails, one for each edge. What does not work becomes a problem, and a
  // picture that cannot be decoded is decoded for no further edge. Throws std::bad_alloc.
  void makeAll(const std::filesystem::path& path, std::vector<Problem>* problems);

  [[nodiscard]] Tallies tallies() const;

 private:
  // The thumbnails of one edge are filed apart: the key knows the file only.
  struct Shelf {
    Shelf(const ZEBCacheProcs& cache, uint32_t edgeInPixels)
        : edge(edgeInPixels), thumbnails(cache) {}

    uint32_t edge;
    PictureCache thumbnails;
  };

  void make(const std::filesystem::path& path, const FileState& file, Shelf& shelf);
  [[nodiscard]] KeptPicture scaledPicture(const std::filesystem::path& path, const FileState& file,
                                          uint32_t edge);
  void fillFromFile(PictureCache::Place& place, const std::filesystem::path& path,
                    const FileState& file);
  void write(const std::filesystem::path& path, const Picture& thumbnail, uint32_t edge);

  const Services& services_;
  const PictureModules& modules_;
  const Options& options_;
  PictureCache pictures_;
  std::list<Shelf> shelves_;
  Tallies tallies_;
  EventCounter decoded_;
  EventCounter scaled_;
  EventCounter written_;
};

}  // namespace examples

#endif
