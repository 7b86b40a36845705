// The program's heap policy. The event screens take a whole catalogue from the report-settings
// library each time they open: at scale some 20 MB of records, one allocation each, freed again
// when the screen closes. Fresh memory costs a page fault per 4 KB page on first touch, some
// 12 us each on a virtual machine: 50 ms or more for one catalogue. A transparent huge page
// costs one fault for 512 of them.
#pragma once

#include <cstddef>

// Room kept at the top of the heap: more than the largest catalogue and its copies.
inline constexpr std::size_t kHeapReserve = std::size_t{64} << 20;

// Makes the heap keep what is freed instead of handing it back to the kernel, grows it by
// `bytes` of address space now (nothing is touched) and asks the kernel to back that room with
// transparent huge pages where it can. Call it first thing in main. False when the room could
// not be reserved or advised (an allocator other than the C library's heap, as under the
// sanitizers, or a kernel without huge pages): the heap then works as before.
bool ReserveHeap(std::size_t bytes);
