#include "modules/words/piece_job.h"

#include <algorithm>
#include <string>

namespace examples {
namespace {

// Enough pieces for a report to be worth its name, and none larger than a cache likes.
size_t pieceSizeFor(size_t textSize) {
  constexpr size_t kPieces = 40;
  constexpr size_t kLargest = 64 * 1024;
  return std::clamp<size_t>((textSize + kPieces - 1) / kPieces, 1, kLargest);
}

}  // namespace

ZEBErrorObject* PieceJob::run(HostingPieceDigest* result, std::string_view text,
                              ZEBProgress* progress) {
  const HostingDigestProcs* const digest = digest_.current();
  if (digest == nullptr) return digest_.notPublished();
  ZEBContainer* made = nullptr;
  if (ZEBErrorObject* const error = digest->NewDigester(&made)) return error;
  DigesterClient digester(services_, Container(services_.containers, made));
  const HostingDigestState* state = nullptr;
  if (ZEBErrorObject* const error = digester.findState(&state)) return error;

  HostingPieceDigest found{};
  if (ZEBErrorObject* const error = feed(digester, *state, text, progress)) return error;
  if (ZEBErrorObject* const error = digester.finish(&found.digest)) return error;
  found.byteCount = state->byteCount;
  found.pieceCount = state->pieceCount;
  found.textAt = text.data();
  found.timesAsked = digester.timesAsked();
  found.signature = Atom::intern(services_.strings, digester.signature()).release();
  *result = found;
  return nullptr;
}

ZEBErrorObject* PieceJob::feed(DigesterClient& digester, const HostingDigestState& state,
                               std::string_view text, ZEBProgress* progress) const {
  const size_t pieceSize = pieceSizeFor(text.size());
  std::string_view rest = text;
  while (true) {
    const uint64_t done = state.byteCount;
    const bool cancel = services_.progress.Update(progress, done, text.size()) == 1;
    if (cancel) return cancelled(done, text.size());
    if (rest.empty()) return nullptr;

    const std::string_view piece = rest.substr(0, pieceSize);
    if (ZEBErrorObject* const error = digester.update(piece)) return error;
    rest.remove_prefix(piece.size());
  }
}

ZEBErrorObject* PieceJob::cancelled(uint64_t done, uint64_t total) const {
  const std::string message =
      "cancelled after " + std::to_string(done) + " of " + std::to_string(total) + " bytes";
  return services_.errors.NewError(message.c_str(), HOSTING_JOB_COMPONENT,
                                   HOSTING_JOB_ERROR_CANCELLED, nullptr, nullptr);
}

}  // namespace examples
