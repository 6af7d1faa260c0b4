#include "host/maker.h"

#include <fmt/format.h>

#include <new>
#include <system_error>
#include <utility>

#include "common/support/error.h"
#include "host/thumbnail_file.h"

namespace examples {
namespace {

using Clock = std::chrono::steady_clock;

// A thumbnail that could not be written, as opposed to a picture that could not be read.
class NotWritten : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string reasonOf(const Services& services, RaisedError& raised) {
  return told(Error(services, raised.release()));
}

}  // namespace

ThumbnailMaker::ThumbnailMaker(const Services& services, const PictureModules& modules,
                               const Options& options)
    : services_(services),
      modules_(modules),
      options_(options),
      pictures_(services.cache),
      decoded_(services.events, "thumbnails: pictures decoded", 30),
      scaled_(services.events, "thumbnails: pictures scaled", 20),
      written_(services.events, "thumbnails: bytes written", 10) {
  for (const uint32_t edge : options.edges) shelves_.emplace_back(services.cache, edge);
}

void ThumbnailMaker::makeAll(const std::filesystem::path& path, std::vector<Problem>* problems) {
  try {
    const FileState file = FileState::of(path);
    for (Shelf& shelf : shelves_) {
      try {
        make(path, file, shelf);
      } catch (const NotWritten& failure) {
        problems->push_back({path, failure.what(), false});
      }
    }
  } catch (RaisedError& raised) {
    problems->push_back({path, reasonOf(services_, raised), true});
  } catch (const std::filesystem::filesystem_error& failure) {
    problems->push_back({path, failure.code().message(), true});
  }
}

void ThumbnailMaker::make(const std::filesystem::path& path, const FileState& file, Shelf& shelf) {
  PictureCache::Place place = shelf.thumbnails.find(file);
  if (place.picture() != nullptr) {
    tallies_.saved += place.picture()->made;
  } else {
    place.fill(scaledPicture(path, file, shelf.edge));
  }
  write(path, place.picture()->picture, shelf.edge);
}

KeptPicture ThumbnailMaker::scaledPicture(const std::filesystem::path& path, const FileState& file,
                                          uint32_t edge) {
  PictureCache::Place place = pictures_.find(file);
  if (place.picture() != nullptr) {
    tallies_.saved += place.picture()->made;
  } else {
    fillFromFile(place, path, file);
  }
  const Clock::time_point start = Clock::now();
  Picture scaled = modules_.scale(place.picture()->picture, edge);
  scaled_.signal(1);
  return {file, std::move(scaled), place.picture()->made + (Clock::now() - start)};
}

void ThumbnailMaker::fillFromFile(PictureCache::Place& place, const std::filesystem::path& path,
                                  const FileState& file) {
  const Clock::time_point start = Clock::now();
  Picture picture = modules_.decode(path);
  decoded_.signal(1);
  place.fill({file, std::move(picture), Clock::now() - start});
}

void ThumbnailMaker::write(const std::filesystem::path& path, const Picture& thumbnail,
                           uint32_t edge) {
  const std::filesystem::path target =
      options_.output / fmt::format("{}-{}.jpg", path.filename().string(), edge);
  try {
    const uint64_t size = writeThumbnail(services_, modules_, target, thumbnail, options_.quality);
    ++tallies_.filesWritten;
    tallies_.bytesWritten += size;
    written_.signal(size);
  } catch (RaisedError& raised) {
    throw NotWritten(fmt::format("{}: {}", target.string(), reasonOf(services_, raised)));
  } catch (const std::runtime_error& failure) {
    throw NotWritten(fmt::format("{}: {}", target.string(), failure.what()));
  }
}

Tallies ThumbnailMaker::tallies() const {
  Tallies tallies = tallies_;
  tallies.pictures = pictures_.lookups();
  tallies.evictions = pictures_.evictions();
  for (const Shelf& shelf : shelves_) {
    tallies.thumbnails.hits += shelf.thumbnails.lookups().hits;
    tallies.thumbnails.misses += shelf.thumbnails.lookups().misses;
    tallies.evictions += shelf.thumbnails.evictions();
  }
  return tallies;
}

}  // namespace examples
