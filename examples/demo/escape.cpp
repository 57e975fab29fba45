#include "escape.h"

namespace audit
{

std::string escape(std::string_view bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += {'\\', 'x', digits[value >> 4U], digits[value & 0xFU]};
    }
    return text;
}

} // namespace audit
