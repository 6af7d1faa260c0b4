// What concerns a chain as a whole: closing it, appending to it, remembering where it ends.
//
// Chains have no loops: makers add a filter in front, appending refuses what would lead back, and a
// state puts back a plain sink. So every walk along the targets ends.
#ifndef ZEB_FILTERS_CHAIN_H
#define ZEB_FILTERS_CHAIN_H

#include "filters/filter.h"

// The last filter of a chain and the target that it had, with a reference to each.
struct ZEBChainState {
  ZEBFilterImpl* filter;
  ZEBDataSink* target;
};

namespace zeb::filters {

// Closes every filter from this one on; one that throws stops no other.
void closeChain(ZEBFilterImpl& first) noexcept;

// Closes every filter from this one on and makes the sink the last one's target. Raises an error
// when that would make a loop, and what a close procedure throws; the targets are then unchanged.
void append(ZEBFilterImpl& first, ZEBDataSink& sink);

// Raises what allocation raises.
[[nodiscard]] ZEBChainState* stateOf(ZEBFilterImpl& first);
// Restores what the state holds and frees it.
void reset(ZEBChainState* state) noexcept;

}  // namespace zeb::filters

#endif
