#include "platform/base/MemoryTrim.h"

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tidemark {
namespace {

/// Drops only segments of code, because they are never written to and can be read from the file again.
/// Constants may have been relocated, and then exist in memory only.
int dropCode(dl_phdr_info* object, size_t /*size*/, void* /*context*/) {
    const auto page = static_cast<ElfW(Addr)>(sysconf(_SC_PAGESIZE));
    for (ElfW(Half) i = 0; i < object->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = object->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || segment.p_flags != (PF_R | PF_X))
            continue;
        const ElfW(Addr) begin = (object->dlpi_addr + segment.p_vaddr) & ~(page - 1);
        const ElfW(Addr) end = object->dlpi_addr + segment.p_vaddr + segment.p_memsz;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the linker reports addresses as numbers.
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
    }
    return 0;
}

}  // namespace

void giveBackMemory() {
    malloc_trim(0);
    dl_iterate_phdr(&dropCode, nullptr);
}

}  // namespace tidemark
