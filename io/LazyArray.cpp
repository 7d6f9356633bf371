#include "io/LazyArray.h"

#include "io/PageMemory.h"

void mp4::ReleaseMapping(void* block, std::size_t bytes) { PageMemory::Unmap(block, bytes); }
