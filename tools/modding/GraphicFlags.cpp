#include "tools/modding/GraphicFlags.h"

#include "images/Graphic.h"

#include <cctype>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace lbxtool {

namespace {

using Graphic = zorv2::Lbx::Content::Graphic;

const struct {
    const char* name;
    Graphic::FLAG flag;
} FLAG_NAMES[] = {
    {"raw", Graphic::RAW},         {"clear", Graphic::CLEAR}, {"shadows", Graphic::SHADOWS},
    {"palette", Graphic::PALETTE}, {"loop", Graphic::LOOP},
};

} // namespace

std::string flagText(Graphic* graphic)
{
    std::string names;
    for (const auto& entry : FLAG_NAMES)
        if (graphic->hasFlag(entry.flag))
            names += (names.empty() ? "" : ",") + std::string(entry.name);
    return names;
}

unsigned short parseFlags(const std::string& text)
{
    if (text.empty())
        return 0;
    if (std::isdigit(static_cast<unsigned char>(text.front()))) {
        std::size_t used = 0;
        unsigned long value = 0;
        try {
            value = std::stoul(text, &used, 0);
        } catch (const std::exception&) {
        }
        if (used != text.size() || value > std::numeric_limits<unsigned short>::max())
            throw std::runtime_error("'" + text + "' is no flag word");
        return static_cast<unsigned short>(value);
    }
    unsigned short flags = 0;
    std::istringstream names(text);
    for (std::string name; std::getline(names, name, ',');) {
        bool known = false;
        for (const auto& entry : FLAG_NAMES)
            if (name == entry.name) {
                flags |= entry.flag;
                known = true;
            }
        if (!known)
            throw std::runtime_error("unknown flag '" + name + "' (known: raw, clear, shadows, palette, loop)");
    }
    return flags;
}

} // namespace lbxtool
