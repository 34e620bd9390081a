// String lists: members holding an owned text and an owned array of int info fields, kept in a
// dynamic array of member records.
#include <cstdint>
#include <cstring>

#include "korvelbase/dynarray.h"
#include "korvelbase/mem.h"
#include "korvelbase/qmstring.h"
#include "korvelbase/strlist.h"

namespace {

// One member; both pointers are owned by the list and null until set.
struct Member {
    char* text;
    int* fields;
};

constexpr int kAtEnd = -1;  // insertion index meaning after the last member

}  // namespace

struct QmStrList {
    int infoFieldCount;   // fields per member, fixed at creation
    QmDynArray* members;  // Member records
};

namespace {

int memberCount(const QmStrList* list) { return qmDynArray_getSize(list->members); }

// The member at index 0..size-1, or null.
Member* memberAt(const QmStrList* list, int index) {
    if (index < 0 || index >= memberCount(list)) return nullptr;
    return static_cast<Member*>(qmDynArray_getElementAdd(list->members, index));
}

void releaseMember(Member* member) {
    if (member->text != nullptr) qmMem_free(member->text);
    if (member->fields != nullptr) qmMem_free(member->fields);
    member->text = nullptr;
    member->fields = nullptr;
}

char* duplicateText(const char* text) {
    const std::size_t bytes = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(qmMem_malloc(bytes));
    if (copy != nullptr) std::memcpy(copy, text, bytes);
    return copy;
}

std::size_t fieldBytes(const QmStrList* list) {
    return static_cast<std::size_t>(list->infoFieldCount) * sizeof(int);
}

// Gives the member its zero-filled field array if it has none; false when that fails.
bool ensureFields(const QmStrList* list, Member* member) {
    if (member->fields == nullptr) {
        member->fields = static_cast<int*>(
            qmMem_calloc(static_cast<std::size_t>(list->infoFieldCount), sizeof(int)));
    }
    return member->fields != nullptr;
}

bool validField(const QmStrList* list, int field) {
    return field >= 0 && field < list->infoFieldCount;
}

// A new array of member records: members [0, at), then gap empty members, then the members from
// at + skipped on; null when an allocation fails.  The list's own array is not touched, so a
// failure leaves the list exactly as it was (no member, text or field array lost).
QmDynArray* rebuiltMembers(const QmStrList* list, int at, int gap, int skipped) {
    const int oldSize = memberCount(list);
    const int newSize = oldSize - skipped + gap;
    QmDynArray* rebuilt = nullptr;
    if (qmDynArray_create(&rebuilt, static_cast<int>(sizeof(Member))) != 0 || rebuilt == nullptr) {
        return nullptr;
    }
    if (newSize > 0) {
        qmDynArray_insertElements(rebuilt, kAtEnd, newSize);
        if (qmDynArray_getSize(rebuilt) != newSize ||
            qmDynArray_getElementAdd(rebuilt, 0) == nullptr) {
            qmDynArray_destroy(&rebuilt);
            return nullptr;
        }
        auto* target = static_cast<Member*>(qmDynArray_getElementAdd(rebuilt, 0));
        const auto* source =
            oldSize > 0 ? static_cast<const Member*>(qmDynArray_getElementAdd(list->members, 0))
                        : nullptr;
        const int tail = oldSize - at - skipped;
        if (at > 0) std::memcpy(target, source, static_cast<std::size_t>(at) * sizeof(Member));
        std::memset(target + at, 0, static_cast<std::size_t>(gap) * sizeof(Member));
        if (tail > 0) {
            std::memcpy(target + at + gap, source + at + skipped,
                        static_cast<std::size_t>(tail) * sizeof(Member));
        }
    }
    return rebuilt;
}

// Makes members the list's record array; the old records go (not the members they pointed to).
void adoptMembers(QmStrList* list, QmDynArray* members) {
    qmDynArray_destroy(&list->members);
    list->members = members;
}

// Opens count empty members before index (kAtEnd: after the last).
bool insertEmptyMembers(QmStrList* list, int index, int count) {
    QmDynArray* grown = rebuiltMembers(list, index == kAtEnd ? memberCount(list) : index, count, 0);
    if (grown == nullptr) return false;
    adoptMembers(list, grown);
    return true;
}

void destroyList(QmStrList* list) {
    for (int i = 0; i < memberCount(list); ++i) {
        if (Member* member = memberAt(list, i)) releaseMember(member);
    }
    if (list->members != nullptr) qmDynArray_destroy(&list->members);
    qmMem_free(list);
}

// A new list holding copies of count members of source from first on, each set with the
// setMember rule.  Null when an allocation fails.
QmStrList* duplicateRange(const QmStrList* source, int first, int count) {
    QmStrList* copy = qmStrList_create(count, source->infoFieldCount);
    if (copy == nullptr) return nullptr;
    for (int k = 0; k < count; ++k) {
        const Member* member = memberAt(source, first + k);
        if (qmStrList_setMember(copy, k, member->text, member->fields) != 0) {
            destroyList(copy);
            return nullptr;
        }
    }
    return copy;
}

bool rangeInside(std::int64_t first, std::int64_t count, int size) {
    return first >= 0 && first + count - 1 < size;
}

}  // namespace

extern "C" {

QmStrList* qmStrList_create(int memberCount, int infoFieldCount) noexcept {
    if (memberCount < 0 || infoFieldCount < 0) return nullptr;
    auto* list = static_cast<QmStrList*>(qmMem_calloc(1, sizeof(QmStrList)));
    if (list == nullptr) return nullptr;
    list->infoFieldCount = infoFieldCount;
    qmDynArray_create(&list->members, static_cast<int>(sizeof(Member)));
    if (list->members == nullptr ||
        (memberCount > 0 && !insertEmptyMembers(list, kAtEnd, memberCount))) {
        destroyList(list);
        return nullptr;
    }
    return list;
}

void qmStrList_destroy(QmStrList* list) noexcept {
    if (list != nullptr) destroyList(list);
}

int qmStrList_size(const QmStrList* list) noexcept {
    return list != nullptr ? memberCount(list) : -1;
}

int qmStrList_numInfoFields(const QmStrList* list) noexcept {
    return list != nullptr ? list->infoFieldCount : -1;
}

int qmStrList_setMember(QmStrList* list, int index, const char* text, const int* fields) noexcept {
    if (list == nullptr) return ERR_FAILURE;
    Member* member = memberAt(list, index);
    if (member == nullptr) return ERR_FAILURE;
    // Everything that can fail is allocated before the member changes, and the new text is
    // copied before the old one is released (text may be the member's own text).
    const bool copiesText = text != nullptr && text[0] != '\0';
    char* newText = copiesText ? duplicateText(text) : nullptr;
    if (copiesText && newText == nullptr) return ERR_FAILURE;
    if (list->infoFieldCount > 0 && !ensureFields(list, member)) {
        if (newText != nullptr) qmMem_free(newText);
        return ERR_FAILURE;
    }
    if (text != nullptr) {
        if (member->text != nullptr) qmMem_free(member->text);
        member->text = newText;  // the empty string leaves no text
    }
    if (list->infoFieldCount > 0 && fields != nullptr) {
        std::memmove(member->fields, fields, fieldBytes(list));
    }
    return 0;
}

int qmStrList_getMember(const char** text, int** fields, const QmStrList* list,
                        int index) noexcept {
    if (list == nullptr) return ERR_FAILURE;
    const Member* member = memberAt(list, index);
    if (member == nullptr) return ERR_FAILURE;
    if (text != nullptr) *text = member->text;
    if (fields != nullptr) *fields = member->fields;
    return 0;
}

int qmStrList_setInfoField(QmStrList* list, int index, int field, int value) noexcept {
    if (list == nullptr || !validField(list, field)) return ERR_FAILURE;
    Member* member = memberAt(list, index);
    if (member == nullptr || !ensureFields(list, member)) return ERR_FAILURE;
    member->fields[field] = value;
    return 0;
}

int qmStrList_getInfoField(int* value, const QmStrList* list, int index, int field) noexcept {
    if (value == nullptr) return ERR_FAILURE;
    *value = 0;
    if (list == nullptr || !validField(list, field)) return ERR_FAILURE;
    const Member* member = memberAt(list, index);
    if (member == nullptr) return ERR_FAILURE;
    if (member->fields != nullptr) *value = member->fields[field];
    return 0;
}

int qmStrList_insertMember(int* newIndex, QmStrList* list, int index, int count) noexcept {
    if (list == nullptr || count < 1) return ERR_FAILURE;
    if (index != kAtEnd && (index < 0 || index > memberCount(list))) return ERR_FAILURE;
    if (!insertEmptyMembers(list, index, count)) return ERR_FAILURE;
    if (newIndex != nullptr) *newIndex = index == kAtEnd ? memberCount(list) - 1 : index;
    return 0;
}

int qmStrList_deleteMember(QmStrList* list, int first, int count) noexcept {
    if (list == nullptr) return ERR_FAILURE;
    if (count < 1) return 0;
    const int size = memberCount(list);
    if (first < 0 || first >= size) return ERR_FAILURE;
    if (count > size - first) count = size - first;
    // The shortened record array is built first: when it cannot be, the list is untouched.
    QmDynArray* shortened = rebuiltMembers(list, first, 0, count);
    if (shortened == nullptr) return ERR_FAILURE;
    for (int i = first + count - 1; i >= first; --i) releaseMember(memberAt(list, i));
    adoptMembers(list, shortened);
    return 0;
}

int qmStrList_getMemberIndex(const QmStrList* list, const char* text) noexcept {
    if (list == nullptr) return -1;
    for (int i = 0; i < memberCount(list); ++i) {
        const Member* member = memberAt(list, i);
        if (member != nullptr && qmString_strcmp(member->text, text) == 0) return i;
    }
    return -1;
}

int qmStrList_copy(QmStrList* destination, const QmStrList* source) noexcept {
    if (destination == nullptr || source == nullptr ||
        destination->infoFieldCount != source->infoFieldCount) {
        return ERR_FAILURE;
    }
    if (destination == source) return 0;
    // Build the copy aside, then swap it in: a failure leaves the destination as it was.
    QmStrList* copy = duplicateRange(source, 0, memberCount(source));
    if (copy == nullptr) return ERR_FAILURE;
    QmDynArray* previous = destination->members;
    destination->members = copy->members;
    copy->members = previous;
    destroyList(copy);
    return 0;
}

int qmStrList_moveMembers(QmStrList* list, int to, int from, int count) noexcept {
    if (list == nullptr) return 0;
    const int size = memberCount(list);
    if (count < 1 || !rangeInside(from, count, size) || !rangeInside(to, count, size)) {
        return ERR_FAILURE;
    }
    // Reading from a snapshot makes overlapping ranges safe.
    QmStrList* snapshot = duplicateRange(list, from, count);
    if (snapshot == nullptr) return ERR_FAILURE;
    int status = 0;
    for (int k = 0; k < count && status == 0; ++k) {
        const Member* member = memberAt(snapshot, k);
        status = qmStrList_setMember(list, to + k, member->text, member->fields);
    }
    destroyList(snapshot);
    return status;
}

}  // extern "C"
