#pragma once

namespace velmorant::platform {

// Where the pixels of large bitmaps come from. By default from the heap. A
// process that draws one card and ends turns huge pages on: a bitmap of 2 MiB
// or more then gets a mapping of its own whose whole 2 MiB blocks the kernel
// may back with huge pages, so that first touching such a block costs one page
// fault instead of 512. A part past the last whole block gets a block of its
// own too when it is half of one or more (one fault for up to 1 MiB more
// memory); a shorter one keeps ordinary pages. A process that draws many
// pictures keeps the default: the heap hands the same pages from one bitmap to
// the next, where a mapping would be faulted in afresh each time.
void setHugePageBitmaps(bool on);
bool hugePageBitmaps();

}  // namespace velmorant::platform
