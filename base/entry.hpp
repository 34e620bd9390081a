// Internal: the entry rule of the families that report through an error word.
//
// Every exported operation of the geometry kernel and of the block arrays starts the same
// way: clear its family's error word, then refuse null pointers (raising the word).  This
// helper is that rule, written once; each family binds it to its own error word
// (kb::utmat::enter, the block arrays' enter) so that an entry point reads
//
//     if (!enter(a, b)) return;
//
// Pointers that a function accepts as null (optional outputs) are simply not passed.
#ifndef KORVELBASE_BASE_ENTRY_HPP
#define KORVELBASE_BASE_ENTRY_HPP

namespace kb {

// True when every pointer is non-null.
template <typename... Pointers>
constexpr bool allPresent(const Pointers*... pointers) noexcept {
    return ((pointers != nullptr) && ...);
}

// Clears the error word through clearWord, then checks the pointers; false, with the word
// raised through raiseWord, when any is null.
template <void (*clearWord)() noexcept, void (*raiseWord)() noexcept, typename... Pointers>
[[nodiscard]] bool enterOperation(const Pointers*... pointers) noexcept {
    clearWord();
    if (allPresent(pointers...)) return true;
    raiseWord();
    return false;
}

}  // namespace kb

#endif  // KORVELBASE_BASE_ENTRY_HPP
