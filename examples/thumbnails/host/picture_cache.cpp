#include "host/picture_cache.h"

#include <memory>
#include <new>
#include <utility>

namespace examples {

FileState FileState::of(const std::filesystem::path& path) {
  return {path.string(), std::filesystem::file_size(path),
          std::filesystem::last_write_time(path).time_since_epoch().count()};
}

// A kept picture with what its deletion needs.
struct PictureCache::Filed : KeptPicture {
  Filed(KeptPicture kept, PictureCache* cache) : KeptPicture(std::move(kept)), owner(cache) {}

  PictureCache* owner;
};

namespace {

FileState* keyOf(KeptPicture* picture) { return picture; }

KeptPicture* pictureAt(void* key) {
  return static_cast<KeptPicture*>(static_cast<FileState*>(key));
}

}  // namespace

int32_t PictureCache::comesFirst(void* a, void* b) {
  return *static_cast<FileState*>(a) < *static_cast<FileState*>(b) ? 1 : 0;
}

void PictureCache::end(void* key, int32_t /*survives*/) {
  auto* const filed = static_cast<Filed*>(pictureAt(key));
  ++filed->owner->evictions_;
  delete filed;
}

PictureCache::PictureCache(const ZEBCacheProcs& cache)
    : cache_(cache), set_(cache.NewCacheSet(comesFirst)) {
  if (set_ == nullptr) throw std::bad_alloc();
  cache_.AddRefCacheSet(set_);
}

PictureCache::~PictureCache() { cache_.DeleteCacheSet(set_); }

PictureCache::Place PictureCache::find(const FileState& file) { return {*this, file}; }

PictureCache::Place::Place(PictureCache& cache, const FileState& file) : owner_(cache) {
  const ZEBCacheProcs& procs = owner_.cache_;
  FileState key = file;  // the search is not declared to leave it alone
  id_ = procs.SearchForID(owner_.set_, &key, ZEB_CACHE_FIND_EQUAL);
  if (id_ == nullptr) throw std::bad_alloc();
  constexpr int32_t kTouch = 1;
  void* const found = procs.MarkNoPurge(id_, &startedAt_, kTouch);
  picture_ = found != nullptr ? pictureAt(found) : nullptr;
  ++(picture_ != nullptr ? owner_.lookups_.hits : owner_.lookups_.misses);
}

PictureCache::Place::~Place() {
  owner_.cache_.MarkPurge(id_);
  owner_.cache_.Release(id_);
}

void PictureCache::Place::fill(KeptPicture picture) {
  const ZEBCacheProcs& procs = owner_.cache_;
  auto filed = std::make_unique<Filed>(std::move(picture), &owner_);
  ZEBCacheID* const asked = id_;
  void* const kept = procs.Attach(
      &id_, keyOf(filed.get()), owner_.set_,
      sizeof(Filed) + filed->path.size() + filed->picture.pixels().size(), end, &startedAt_);
  if (kept == nullptr) throw std::bad_alloc();
  if (kept == keyOf(filed.get())) static_cast<void>(filed.release());  // the cache's from here on
  if (id_ != asked) {
    // Somebody has filed one meanwhile, which took the place of ours; the pin moves to it.
    procs.MarkNoPurge(id_, nullptr, 0);
    procs.MarkPurge(asked);
  }
  picture_ = pictureAt(kept);
}

}  // namespace examples
