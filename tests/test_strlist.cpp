// String lists and the library string comparison, checked against a model of members.
#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "korvelbase/qmstring.h"
#include "korvelbase/strlist.h"

namespace {

struct List {
    QmStrList* handle;
    List(int members, int fields) : handle(qmStrList_create(members, fields)) {
        EXPECT_NE(handle, nullptr);
    }
    ~List() { qmStrList_destroy(handle); }
    operator QmStrList*() const { return handle; }
};

// What a member should hold: text (none = null) and field values (none = no field array).
struct ModelMember {
    std::optional<std::string> text;
    std::optional<std::vector<int>> fields;
};
using Model = std::vector<ModelMember>;

// The setMember rule applied to the model.
void modelSet(ModelMember& member, int fieldCount, const char* text, const int* fields) {
    if (text != nullptr) {
        member.text = text[0] != '\0' ? std::optional<std::string>(text) : std::nullopt;
    }
    if (fieldCount > 0) {
        if (!member.fields) member.fields = std::vector<int>(static_cast<size_t>(fieldCount), 0);
        if (fields != nullptr) member.fields->assign(fields, fields + fieldCount);
    }
}

void expectMatches(const QmStrList* list, const Model& model, int fieldCount) {
    ASSERT_EQ(qmStrList_size(list), static_cast<int>(model.size()));
    for (size_t i = 0; i < model.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "member " << i);
        const char* text = "unset";
        int* fields = reinterpret_cast<int*>(&text);
        ASSERT_EQ(qmStrList_getMember(&text, &fields, list, static_cast<int>(i)), 0);
        if (model[i].text) {
            ASSERT_NE(text, nullptr);
            EXPECT_EQ(std::string(text), *model[i].text);
        } else {
            EXPECT_EQ(text, nullptr);
        }
        EXPECT_EQ(fields != nullptr, model[i].fields.has_value());
        for (int f = 0; f < fieldCount; ++f) {
            int value = -1;
            EXPECT_EQ(qmStrList_getInfoField(&value, list, static_cast<int>(i), f), 0);
            EXPECT_EQ(value, model[i].fields ? (*model[i].fields)[static_cast<size_t>(f)] : 0);
        }
    }
}

}  // namespace

TEST(QmString, StrcmpOrdersTextsAndNulls) {
    struct Case {
        const char* left;
        const char* right;
        int expected;
    };
    const Case cases[] = {
        {nullptr, nullptr, 0}, {nullptr, "", -1},    {"", nullptr, 1},     {nullptr, "a", -1},
        {"", "", 0},           {"abc", "abc", 0},    {"abc", "abd", -1},   {"b", "abc", 1},
        {"ab", "abc", -1},     {"abc", "ab", 1},     {"Z", "a", -1},       {"\xff", "a", 1},
        {"zzzzzz", "a", 1},    {"a", "zzzzzz", -1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(qmString_strcmp(c.left, c.right), c.expected)
            << (c.left ? c.left : "(null)") << " vs " << (c.right ? c.right : "(null)");
    }
}

TEST(StrList, CreationAndEmptyMembers) {
    List list(3, 2);
    EXPECT_EQ(qmStrList_size(list), 3);
    EXPECT_EQ(qmStrList_numInfoFields(list), 2);
    expectMatches(list, Model(3), 2);

    EXPECT_EQ(qmStrList_create(-1, 2), nullptr);
    EXPECT_EQ(qmStrList_create(2, -1), nullptr);
    List empty(0, 0);
    EXPECT_EQ(qmStrList_size(empty), 0);
    EXPECT_EQ(qmStrList_getMemberIndex(empty, "x"), -1);
    EXPECT_EQ(qmStrList_getMemberIndex(empty, nullptr), -1);

    // Null lists.
    int value = 5;
    EXPECT_EQ(qmStrList_size(nullptr), -1);
    EXPECT_EQ(qmStrList_numInfoFields(nullptr), -1);
    EXPECT_EQ(qmStrList_setMember(nullptr, 0, "a", nullptr), ERR_FAILURE);
    EXPECT_EQ(qmStrList_getMember(nullptr, nullptr, nullptr, 0), ERR_FAILURE);
    EXPECT_EQ(qmStrList_setInfoField(nullptr, 0, 0, 1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_getInfoField(&value, nullptr, 0, 0), ERR_FAILURE);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(qmStrList_insertMember(nullptr, nullptr, -1, 1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_deleteMember(nullptr, 0, 1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_getMemberIndex(nullptr, "a"), -1);
    EXPECT_EQ(qmStrList_copy(nullptr, list), ERR_FAILURE);
    EXPECT_EQ(qmStrList_moveMembers(nullptr, 0, 1, 1), 0);
    qmStrList_destroy(nullptr);
}

TEST(StrList, MemberTextAndFieldRules) {
    List list(3, 2);
    char buffer[] = "alpha";
    const int fields[] = {7, -8};
    ASSERT_EQ(qmStrList_setMember(list, 0, buffer, fields), 0);
    std::strcpy(buffer, "omega");  // the list keeps its own copy
    const char* text = nullptr;
    int* stored = nullptr;
    qmStrList_getMember(&text, &stored, list, 0);
    EXPECT_STREQ(text, "alpha");
    EXPECT_NE(stored, fields);

    // A null text keeps the text; null fields keep the values; "" clears the text.
    EXPECT_EQ(qmStrList_setMember(list, 0, nullptr, nullptr), 0);
    Model model(3);
    modelSet(model[0], 2, "alpha", fields);
    expectMatches(list, model, 2);
    EXPECT_EQ(qmStrList_setMember(list, 0, "", nullptr), 0);
    model[0].text.reset();
    expectMatches(list, model, 2);

    // A member's own text may be stored back into another member or itself.
    qmStrList_setMember(list, 1, "beta", nullptr);
    qmStrList_getMember(&text, nullptr, list, 1);
    EXPECT_EQ(qmStrList_setMember(list, 1, text, nullptr), 0);
    qmStrList_getMember(&text, nullptr, list, 1);
    EXPECT_EQ(qmStrList_setMember(list, 2, text, nullptr), 0);
    modelSet(model[1], 2, "beta", nullptr);
    modelSet(model[2], 2, "beta", nullptr);
    expectMatches(list, model, 2);

    // Field and index bounds.
    int value = -1;
    EXPECT_EQ(qmStrList_setInfoField(list, 2, 1, 99), 0);
    (*model[2].fields)[1] = 99;
    expectMatches(list, model, 2);
    EXPECT_EQ(qmStrList_setInfoField(list, 2, 2, 1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_setInfoField(list, 2, -1, 1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_getInfoField(&value, list, 2, -1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_getInfoField(&value, list, 2, 2), ERR_FAILURE);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(qmStrList_getInfoField(nullptr, list, 0, 0), ERR_FAILURE);
    for (int bad : {-1, 3}) {
        EXPECT_EQ(qmStrList_setMember(list, bad, "x", nullptr), ERR_FAILURE);
        EXPECT_EQ(qmStrList_getMember(&text, nullptr, list, bad), ERR_FAILURE);
        EXPECT_EQ(qmStrList_setInfoField(list, bad, 0, 1), ERR_FAILURE);
        EXPECT_EQ(qmStrList_getInfoField(&value, list, bad, 0), ERR_FAILURE);
    }
    expectMatches(list, model, 2);

    // Without info fields a member never gets a field array.
    List plain(1, 0);
    EXPECT_EQ(qmStrList_setMember(plain, 0, "x", fields), 0);
    EXPECT_EQ(qmStrList_setInfoField(plain, 0, 0, 1), ERR_FAILURE);
    Model plainModel(1);
    modelSet(plainModel[0], 0, "x", fields);
    expectMatches(plain, plainModel, 0);
}

TEST(StrList, InsertDeleteAndSearch) {
    List list(2, 1);
    qmStrList_setMember(list, 0, "a", nullptr);
    qmStrList_setMember(list, 1, "b", nullptr);
    int newIndex = -5;
    EXPECT_EQ(qmStrList_insertMember(&newIndex, list, -1, 3), 0);
    EXPECT_EQ(newIndex, 4);
    EXPECT_EQ(qmStrList_insertMember(&newIndex, list, 1, 2), 0);
    EXPECT_EQ(newIndex, 1);
    EXPECT_EQ(qmStrList_insertMember(nullptr, list, 7, 1), 0);  // index == size: at the end
    EXPECT_EQ(qmStrList_insertMember(&newIndex, list, 9, 1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_insertMember(&newIndex, list, 0, 0), ERR_FAILURE);
    Model model(8);
    modelSet(model[0], 1, "a", nullptr);
    modelSet(model[3], 1, "b", nullptr);
    expectMatches(list, model, 1);

    // Search: first equal text; a null text finds the first member without one.
    qmStrList_setMember(list, 6, "b", nullptr);
    EXPECT_EQ(qmStrList_getMemberIndex(list, "b"), 3);
    EXPECT_EQ(qmStrList_getMemberIndex(list, "a"), 0);
    EXPECT_EQ(qmStrList_getMemberIndex(list, nullptr), 1);
    EXPECT_EQ(qmStrList_getMemberIndex(list, "c"), -1);
    EXPECT_EQ(qmStrList_getMemberIndex(list, ""), -1);

    // The count is clipped to the end of the list.
    List three(3, 0);
    qmStrList_setMember(three, 0, "keep", nullptr);
    qmStrList_setMember(three, 2, "gone", nullptr);
    EXPECT_EQ(qmStrList_deleteMember(three, 1, 10), 0);
    Model threeModel(1);
    threeModel[0].text = "keep";
    expectMatches(three, threeModel, 0);
    EXPECT_EQ(qmStrList_deleteMember(three, 0, 0), 0);
    EXPECT_EQ(qmStrList_deleteMember(three, 1, 1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_deleteMember(three, -1, 1), ERR_FAILURE);
    EXPECT_EQ(qmStrList_size(three), 1);
}

TEST(StrList, CopyAndMove) {
    List source(3, 2);
    List destination(1, 2);
    List other(1, 3);
    const int fields[] = {4, 5};
    qmStrList_setMember(source, 0, "zero", fields);
    qmStrList_setMember(source, 2, "two", nullptr);
    qmStrList_setMember(destination, 0, "old", fields);

    // Mismatched field counts: failure, destination untouched.
    EXPECT_EQ(qmStrList_copy(other, source), ERR_FAILURE);
    EXPECT_EQ(qmStrList_size(other), 1);
    EXPECT_EQ(qmStrList_copy(destination, nullptr), ERR_FAILURE);
    EXPECT_EQ(qmStrList_copy(destination, destination), 0);

    ASSERT_EQ(qmStrList_copy(destination, source), 0);
    Model copied(3);
    for (auto& member : copied) modelSet(member, 2, nullptr, nullptr);  // every copy has fields
    modelSet(copied[0], 2, "zero", fields);
    modelSet(copied[2], 2, "two", nullptr);
    expectMatches(destination, copied, 2);
    // Independent: changing the source leaves the copy alone.
    qmStrList_setMember(source, 0, "changed", nullptr);
    qmStrList_setInfoField(source, 0, 0, 100);
    expectMatches(destination, copied, 2);

    // Overlapping move down by one over members 0..2 of a 4-member list.
    List moving(4, 1);
    const char* names[] = {"a", "b", nullptr, "d"};
    for (int i = 0; i < 4; ++i) {
        const int value = i + 1;
        qmStrList_setMember(moving, i, names[i], i == 2 ? nullptr : &value);
    }
    EXPECT_EQ(qmStrList_moveMembers(moving, 1, 0, 3), 0);
    // Member 3 keeps "d" (its source has no text) but takes the source's zeroed field.
    Model moved(4);
    modelSet(moved[0], 1, "a", nullptr);
    (*moved[0].fields)[0] = 1;
    moved[1] = moved[0];
    modelSet(moved[2], 1, "b", nullptr);
    (*moved[2].fields)[0] = 2;
    moved[3].text = "d";
    moved[3].fields = std::vector<int>{0};
    expectMatches(moving, moved, 1);

    for (const auto& bad : {std::vector<int>{0, 1, 0}, {-1, 0, 1}, {0, -1, 1}, {2, 0, 3},
                            {0, 2, 3}}) {
        EXPECT_EQ(qmStrList_moveMembers(moving, bad[0], bad[1], bad[2]), ERR_FAILURE);
    }
    expectMatches(moving, moved, 1);
}

TEST(StrList, RandomOperationsMatchModel) {
    constexpr int kFields = 3;
    std::mt19937 random(99);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    List list(4, kFields);
    Model model(4);
    const char* texts[] = {nullptr, "", "north", "south", "east", "west", "a longer member name"};
    for (int step = 0; step < 2500; ++step) {
        const int size = static_cast<int>(model.size());
        switch (pick(0, 6)) {
            case 0:
            case 1: {
                const int index = pick(-1, size);
                const char* text = texts[pick(0, 6)];
                int fields[kFields] = {pick(-9, 9), pick(-9, 9), pick(-9, 9)};
                const bool withFields = pick(0, 1) == 1;
                const int status =
                    qmStrList_setMember(list, index, text, withFields ? fields : nullptr);
                if (index < 0 || index >= size) {
                    EXPECT_EQ(status, ERR_FAILURE);
                } else {
                    EXPECT_EQ(status, 0);
                    modelSet(model[static_cast<size_t>(index)], kFields, text,
                             withFields ? fields : nullptr);
                }
                break;
            }
            case 2: {
                if (size == 0) break;
                const int index = pick(0, size - 1);
                const int field = pick(0, kFields - 1);
                const int value = pick(-100, 100);
                ASSERT_EQ(qmStrList_setInfoField(list, index, field, value), 0);
                auto& member = model[static_cast<size_t>(index)];
                if (!member.fields) member.fields = std::vector<int>(kFields, 0);
                (*member.fields)[static_cast<size_t>(field)] = value;
                break;
            }
            case 3: {
                const int index = pick(0, 4) == 0 ? -1 : pick(0, size);
                const int count = pick(1, 4);
                int newIndex = -9;
                ASSERT_EQ(qmStrList_insertMember(&newIndex, list, index, count), 0);
                EXPECT_EQ(newIndex, index == -1 ? size + count - 1 : index);
                model.insert(index == -1 ? model.end() : model.begin() + index,
                             static_cast<size_t>(count), ModelMember{});
                break;
            }
            case 4: {
                if (size == 0) break;
                const int first = pick(0, size - 1);
                const int count = pick(0, 5);
                ASSERT_EQ(qmStrList_deleteMember(list, first, count), 0);
                const int removed = std::min(count, size - first);
                model.erase(model.begin() + first, model.begin() + first + removed);
                break;
            }
            case 5: {
                if (size == 0) break;
                const int count = pick(1, size);
                const int from = pick(0, size - count);
                const int to = pick(0, size - count);
                ASSERT_EQ(qmStrList_moveMembers(list, to, from, count), 0);
                Model snapshot(model.begin() + from, model.begin() + from + count);
                for (auto& member : snapshot) {
                    ModelMember duplicate;
                    modelSet(duplicate, kFields, member.text ? member.text->c_str() : nullptr,
                             member.fields ? member.fields->data() : nullptr);
                    member = duplicate;
                }
                for (int k = 0; k < count; ++k) {
                    const auto& source = snapshot[static_cast<size_t>(k)];
                    modelSet(model[static_cast<size_t>(to + k)], kFields,
                             source.text ? source.text->c_str() : nullptr, source.fields->data());
                }
                break;
            }
            default: {  // round trip through a copy
                List copy(pick(0, 3), kFields);
                ASSERT_EQ(qmStrList_copy(copy, list), 0);
                ASSERT_EQ(qmStrList_copy(list, copy), 0);
                for (auto& member : model) {
                    ModelMember duplicate;
                    modelSet(duplicate, kFields, member.text ? member.text->c_str() : nullptr,
                             member.fields ? member.fields->data() : nullptr);
                    member = duplicate;
                }
                break;
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectMatches(list, model, kFields)) << "after step " << step;
    }
}
