// The five atoms that the stream interfaces are named by.
#ifndef ZEB_FRAME_STREAM_NAMES_H
#define ZEB_FRAME_STREAM_NAMES_H

namespace zeb::frame {

// Makes the record and its atoms and puts it into the host state. Raises what allocation raises,
// and then nothing is left of it.
void makeStreamNames();

// Releases the atoms, the last one first, and the record.
void releaseStreamNames() noexcept;

}  // namespace zeb::frame

#endif
