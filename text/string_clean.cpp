// In-place cleaning of text: control characters, leading and trailing blanks.
#include "text/string_clean.hpp"

#include <cctype>
#include <cstring>

namespace kb::text {

void cleanString(char* text, CleanOptions options) noexcept {
    if (text == nullptr) return;
    if (options.controlsToBlanks) {
        for (char* p = text; *p != '\0'; ++p)
            if (std::iscntrl(static_cast<unsigned char>(*p))) *p = ' ';
    }
    if (options.stripLeading) {
        std::size_t skip = 0;
        while (text[skip] == ' ') ++skip;
        if (skip > 0) std::memmove(text, text + skip, std::strlen(text + skip) + 1);
    }
    if (options.stripTrailing) {
        std::size_t length = std::strlen(text);
        while (length > 0 && text[length - 1] == ' ') text[--length] = '\0';
    }
}

}  // namespace kb::text
