#pragma once

#include <QtGlobal>

// Asks the kernel to back a large buffer that is about to be filled with large pages where it
// can. Filling 25 MB page by page of 4 KB is 6,000 page faults, each a trap into the kernel
// (a costly one on a virtual machine); a library file is read, unescaped and parsed through
// several buffers of its size. Only the whole large pages inside the buffer are concerned; a
// kernel that does not offer them (or a small buffer) leaves everything as it was.
class LargePages {
public:
    static void prefer(void* data, qsizetype size);
};
