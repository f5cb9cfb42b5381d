// The page reads and writes text tables in the text escape only, never in a
// charset, so the core's charset code, which libunistring serves on the
// command line, is linked here but never runs. These stand in for the
// libunistring symbols it names; each refuses should it ever run.

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace {

[[noreturn]] void noCharsets()
{
    throw std::logic_error("the browser page reads text in the text escape only, not in a charset");
}

} // namespace

extern "C" {

// Only its address is taken, as the normalisation form to ask for.
char uninorm_nfc[1];

const std::uint8_t* u8_check(const std::uint8_t*, std::size_t)
{
    noCharsets();
}

std::size_t u8_mbsnlen(const std::uint8_t*, std::size_t)
{
    noCharsets();
}

int u8_mbtouc_aux(std::uint32_t*, const std::uint8_t*, std::size_t)
{
    noCharsets();
}

std::uint8_t* u8_normalize(const void*, const std::uint8_t*, std::size_t, std::uint8_t*, std::size_t*)
{
    noCharsets();
}

} // extern "C"
