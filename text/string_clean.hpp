// Internal: in-place cleaning of NUL-terminated text.
#ifndef KORVELBASE_TEXT_STRING_CLEAN_HPP
#define KORVELBASE_TEXT_STRING_CLEAN_HPP

namespace kb::text {

struct CleanOptions {
    bool controlsToBlanks;  // every character iscntrl() accepts becomes a blank
    bool stripLeading;      // leading blanks removed (the text moves to the front)
    bool stripTrailing;     // trailing blanks removed
};

// Cleans the text in place; null is ignored.  The text never grows.
void cleanString(char* text, CleanOptions options) noexcept;

}  // namespace kb::text

#endif  // KORVELBASE_TEXT_STRING_CLEAN_HPP
