// Linked into a daemon of its own: memory that nothing points to, which the leak sanitizer has to find.

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace
{

bool leak()
{
    constexpr std::size_t size = 1000;
    // Several, since a register or an old stack frame may still point to the last one.
    for (int i = 0; i < 10; ++i) {
        void *volatile block = std::malloc(size);
        std::memset(block, i, size);
        block = nullptr;
    }
    return true;
}

[[maybe_unused]] const bool hasLeaked = leak();

} // namespace
