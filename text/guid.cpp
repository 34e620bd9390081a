// Globally unique identifiers: random version-4 generation, the braced UTF-16 text form,
// bytewise comparison, copy and clear.  The system's identifier services are used where the
// system has them.
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "base/platform.hpp"
#include "korvelbase/qmguid.h"

namespace {

constexpr std::int32_t kNotAnIdentifier = static_cast<std::int32_t>(0x800401F4u);
constexpr std::int32_t kInvalidArgument = static_cast<std::int32_t>(0x80070057u);
constexpr std::int32_t kNoRandomBytes = static_cast<std::int32_t>(0x80004005u);
constexpr int kBracedLength = 38;
constexpr int kBareLength = 36;
constexpr char kHexDigits[] = "0123456789ABCDEF";

// The hexadecimal digits of the text form, in order: Data1 (8), Data2 (4), Data3 (4),
// Data4[0..1] (4), Data4[2..7] (12), with '-' after the 8th, 12th, 16th and 20th digit.
constexpr int kDashAfter[] = {8, 12, 16, 20};

void bytesOf(const QmGuid& g, unsigned char (&bytes)[16]) {
    // The digits follow the fields' values (not their memory order).
    bytes[0] = static_cast<unsigned char>(g.Data1 >> 24);
    bytes[1] = static_cast<unsigned char>(g.Data1 >> 16);
    bytes[2] = static_cast<unsigned char>(g.Data1 >> 8);
    bytes[3] = static_cast<unsigned char>(g.Data1);
    bytes[4] = static_cast<unsigned char>(g.Data2 >> 8);
    bytes[5] = static_cast<unsigned char>(g.Data2);
    bytes[6] = static_cast<unsigned char>(g.Data3 >> 8);
    bytes[7] = static_cast<unsigned char>(g.Data3);
    std::memcpy(bytes + 8, g.Data4, 8);
}

QmGuid guidOf(const unsigned char (&bytes)[16]) {
    QmGuid g;
    g.Data1 = (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
              (std::uint32_t{bytes[2]} << 8) | bytes[3];
    g.Data2 = static_cast<std::uint16_t>((bytes[4] << 8) | bytes[5]);
    g.Data3 = static_cast<std::uint16_t>((bytes[6] << 8) | bytes[7]);
    std::memcpy(g.Data4, bytes + 8, 8);
    return g;
}

bool dashAfter(int digits) {
    for (const int d : kDashAfter) {
        if (digits == d) return true;
    }
    return false;
}

// Writes the 36 characters of the bare form (no NUL).
void writeBare(const QmGuid& g, char16_t* text) {
    unsigned char bytes[16];
    bytesOf(g, bytes);
    int digits = 0;
    for (const unsigned char b : bytes) {
        for (const int nibble : {b >> 4, b & 0xF}) {
            *text++ = static_cast<char16_t>(kHexDigits[nibble]);
            if (dashAfter(++digits)) *text++ = u'-';
        }
    }
}

int hexValue(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    return -1;
}

// Parses exactly the braced form followed by the end of the text; reads no unit past the
// first that does not fit.
bool parseBraced(const char16_t* text, QmGuid& out) {
    if (*text++ != u'{') return false;
    unsigned char bytes[16] = {};
    int digits = 0;
    while (digits < 32) {
        const int high = hexValue(*text);
        if (high < 0) return false;
        ++text;
        const int low = hexValue(*text);
        if (low < 0) return false;
        ++text;
        bytes[digits / 2] = static_cast<unsigned char>(high * 16 + low);
        digits += 2;
        if (dashAfter(digits) && *text++ != u'-') return false;
    }
    if (*text++ != u'}' || *text != 0) return false;
    out = guidOf(bytes);
    return true;
}

}  // namespace

extern "C" {

int32_t qmGuid_generate(QmGuid* out) noexcept {
    if (out == nullptr) return kInvalidArgument;
    std::int32_t result = 0;
    if (kb::platform::systemCreateGuid(out, result)) return result;
    unsigned char bytes[16];
    if (!kb::platform::secureRandomBytes(bytes, sizeof bytes)) return kNoRandomBytes;
    QmGuid g = guidOf(bytes);
    g.Data3 = static_cast<std::uint16_t>((g.Data3 & 0x0FFF) | 0x4000);  // version 4
    g.Data4[0] = static_cast<std::uint8_t>((g.Data4[0] & 0x3F) | 0x80);  // RFC 4122 variant
    *out = g;
    return 0;
}

int qmGuid_compare(const QmGuid* a, const QmGuid* b) noexcept {
    if (a == nullptr || b == nullptr) return a == b ? 0 : (a == nullptr ? -1 : 1);
    const int order = std::memcmp(a, b, sizeof(QmGuid));
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

int qmGuid_equal(const QmGuid* a, const QmGuid* b) noexcept {
    if (a == nullptr || b == nullptr) return 0;
    return std::memcmp(a, b, sizeof(QmGuid)) == 0 ? 1 : 0;
}

int32_t qmGuid_fromString(QmGuid* out, const QmChar16* text) noexcept {
    if (out == nullptr || text == nullptr) return kInvalidArgument;
    QmGuid parsed;
    if (!parseBraced(text, parsed)) return kNotAnIdentifier;
    std::int32_t result = 0;
    if (kb::platform::systemGuidFromText(text, out, result)) return result;
    *out = parsed;
    return 0;
}

int32_t qmGuid_toString(QmChar16* text, const QmGuid* guid) noexcept {
    if (text == nullptr || guid == nullptr) return kInvalidArgument;
    std::int32_t result = 0;
    if (kb::platform::systemGuidToText(guid, text, result)) return result;
    text[0] = u'{';
    writeBare(*guid, text + 1);
    text[kBracedLength - 1] = u'}';
    text[kBracedLength] = 0;
    return 0;
}

int32_t qmGuid_toStringNoBrackets(QmChar16* text, const QmGuid* guid) noexcept {
    if (text == nullptr || guid == nullptr) return kInvalidArgument;
    writeBare(*guid, text);
    text[kBareLength] = 0;
    return 0;
}

int32_t qmGuid_clear(QmGuid* guid) noexcept {
    if (guid != nullptr) std::memset(guid, 0, sizeof *guid);
    return 0;
}

int qmGuid_isClear(const QmGuid* guid) noexcept {
    if (guid == nullptr) return 0;
    static const QmGuid kClear{};
    return std::memcmp(guid, &kClear, sizeof kClear) == 0 ? 1 : 0;
}

int32_t qmGuid_copy(QmGuid* destination, const QmGuid* source) noexcept {
    if (destination != nullptr && source != nullptr) std::memmove(destination, source, sizeof *source);
    return 0;
}

}  // extern "C"
