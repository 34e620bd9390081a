// String lists and the library string comparison, checked against a model of members.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "korvelbase/qmstring.h"
#include "korvelbase/strlist.h"

namespace {

// What a member should hold: text (none = null) and field values (none = no field array).
struct ModelMember {
    std::optional<std::string> text;
    std::optional<std::vector<int>> fields;
};
using Model = std::vector<ModelMember>;

// The setMember rule applied to the model.
void modelSet(ModelMember& member, int fieldCount, const char* text, const int* fields) {
    if (text != nullptr) member.text = *text ? std::optional<std::string>(text) : std::nullopt;
    if (fieldCount == 0) return;
    if (!member.fields) member.fields = std::vector<int>(static_cast<size_t>(fieldCount), 0);
    if (fields != nullptr) member.fields->assign(fields, fields + fieldCount);
}

// A member as duplicated by copy: set from the source member onto an empty one.
ModelMember duplicate(const ModelMember& source, int fieldCount) {
    ModelMember copy;
    modelSet(copy, fieldCount, source.text ? source.text->c_str() : nullptr,
             source.fields ? source.fields->data() : nullptr);
    return copy;
}

void expectMatches(const QmStrList* list, const Model& model, int fieldCount) {
    ASSERT_EQ(qmStrList_size(list), static_cast<int>(model.size()));
    for (int i = 0; i < static_cast<int>(model.size()); ++i) {
        const ModelMember& expected = model[static_cast<size_t>(i)];
        const char* text = "unset";
        int* fields = nullptr;
        ASSERT_EQ(qmStrList_getMember(&text, &fields, list, i), 0);
        EXPECT_EQ(text ? std::optional<std::string>(text) : std::nullopt, expected.text) << i;
        EXPECT_EQ(fields != nullptr, expected.fields.has_value()) << i;
        for (int f = 0; f < fieldCount; ++f) {
            int value = -1;
            EXPECT_EQ(qmStrList_getInfoField(&value, list, i, f), 0);
            EXPECT_EQ(value, expected.fields ? (*expected.fields)[static_cast<size_t>(f)] : 0) << i;
        }
    }
}

}  // namespace

TEST(QmString, StrcmpOrdersTextsAndNulls) {
    // {left, right, expected}: null sorts before every text; bytes compare unsigned
    const std::tuple<const char*, const char*, int> cases[] = {
        {nullptr, nullptr, 0}, {nullptr, "", -1}, {"", nullptr, 1}, {"abc", "abc", 0},
        {"abc", "abd", -1},    {"ab", "abc", -1},  {"\xff", "a", 1}};
    for (const auto& [left, right, expected] : cases)
        EXPECT_EQ(qmString_strcmp(left, right), expected)
            << (left ? left : "(null)") << " vs " << (right ? right : "(null)");
}

TEST(StrList, MemberRulesAndBounds) {
    QmStrList* list = qmStrList_create(3, 2);
    Model model(3);
    expectMatches(list, model, 2);  // three empty members whose fields read as 0
    EXPECT_EQ(qmStrList_size(nullptr), -1);

    std::string buffer = "alpha";
    const int fields[] = {7, -8};
    ASSERT_EQ(qmStrList_setMember(list, 0, buffer.c_str(), fields), 0);
    buffer[0] = 'X';  // the list holds its own copy
    modelSet(model[0], 2, "alpha", fields);
    qmStrList_setMember(list, 0, "", nullptr);  // the empty string clears the text
    model[0].text.reset();
    // A member's own text can be stored onto itself and onto another member.
    const char* text = nullptr;
    qmStrList_setMember(list, 1, "beta", nullptr);
    qmStrList_getMember(&text, nullptr, list, 1);
    EXPECT_EQ(qmStrList_setMember(list, 1, text, nullptr), 0);
    qmStrList_getMember(&text, nullptr, list, 1);
    EXPECT_EQ(qmStrList_setMember(list, 2, text, nullptr), 0);
    modelSet(model[1], 2, "beta", nullptr);
    modelSet(model[2], 2, "beta", nullptr);
    expectMatches(list, model, 2);

    int value = 5;
    for (const auto& bad : {std::vector<int>{2, 2}, {2, -1}, {-1, 0}, {3, 0}}) {  // {index, field}
        EXPECT_EQ(qmStrList_setInfoField(list, bad[0], bad[1], 1), ERR_FAILURE);
        EXPECT_EQ(qmStrList_getInfoField(&value, list, bad[0], bad[1]), ERR_FAILURE);
        EXPECT_EQ(value, 0);
    }
    expectMatches(list, model, 2);

    // Search by qmString_strcmp: a null text finds the first member without one.
    qmStrList_setMember(list, 2, "alpha", nullptr);
    EXPECT_EQ(qmStrList_getMemberIndex(list, "alpha"), 2);
    EXPECT_EQ(qmStrList_getMemberIndex(list, nullptr), 0);
    EXPECT_EQ(qmStrList_getMemberIndex(list, "gamma"), -1);

    // Copying between lists with different field counts fails and leaves the destination alone.
    QmStrList* other = qmStrList_create(1, 3);
    EXPECT_EQ(qmStrList_copy(other, list), ERR_FAILURE);
    EXPECT_EQ(qmStrList_size(other), 1);
    qmStrList_destroy(other);
    qmStrList_destroy(list);
}

TEST(StrList, InsertAndDeleteCounts) {
    QmStrList* list = qmStrList_create(2, 0);
    int newIndex = -5;
    EXPECT_EQ(qmStrList_insertMember(&newIndex, list, -1, 3), 0);
    EXPECT_EQ(newIndex, 4);
    for (const auto& bad : {std::pair{9, 1}, {0, 0}})  // {index, count}
        EXPECT_EQ(qmStrList_insertMember(&newIndex, list, bad.first, bad.second), ERR_FAILURE);
    qmStrList_setMember(list, 0, "keep", nullptr);
    EXPECT_EQ(qmStrList_deleteMember(list, 1, 10), 0);  // the count is cut to the end
    EXPECT_EQ(qmStrList_deleteMember(list, 0, 0), 0);
    EXPECT_EQ(qmStrList_deleteMember(list, 1, 1), ERR_FAILURE);
    expectMatches(list, Model{{std::string("keep"), std::nullopt}}, 0);
    qmStrList_destroy(list);
}

TEST(StrList, RandomOperationsMatchModel) {
    constexpr int kFields = 3;
    std::mt19937 random(99);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    QmStrList* list = qmStrList_create(4, kFields);
    Model model(4);
    const char* texts[] = {nullptr, "", "north", "south", "east", "a longer member name"};
    for (int step = 0; step < 800; ++step) {
        const int size = static_cast<int>(model.size());
        const int op = pick(0, 6);
        if (op <= 1) {  // set, sometimes outside the list
            const int index = pick(-1, size);
            const char* text = texts[pick(0, 5)];
            const int values[kFields] = {pick(-9, 9), pick(-9, 9), pick(-9, 9)};
            const int* fields = pick(0, 1) ? values : nullptr;
            const bool exists = index >= 0 && index < size;
            EXPECT_EQ(qmStrList_setMember(list, index, text, fields), exists ? 0 : ERR_FAILURE);
            if (exists) modelSet(model[static_cast<size_t>(index)], kFields, text, fields);
        } else if (op == 2 && size > 0) {
            const int index = pick(0, size - 1), field = pick(0, kFields - 1), value = pick(-99, 99);
            ASSERT_EQ(qmStrList_setInfoField(list, index, field, value), 0);
            modelSet(model[static_cast<size_t>(index)], kFields, nullptr, nullptr);
            (*model[static_cast<size_t>(index)].fields)[static_cast<size_t>(field)] = value;
        } else if (op == 3) {
            const int index = pick(0, 4) == 0 ? -1 : pick(0, size), count = pick(1, 4);
            int newIndex = -9;
            ASSERT_EQ(qmStrList_insertMember(&newIndex, list, index, count), 0);
            EXPECT_EQ(newIndex, index == -1 ? size + count - 1 : index);
            model.insert(index == -1 ? model.end() : model.begin() + index,
                         static_cast<size_t>(count), ModelMember{});
        } else if (op == 4 && size > 0) {
            const int first = pick(0, size - 1), count = pick(0, 5);
            ASSERT_EQ(qmStrList_deleteMember(list, first, count), 0);
            model.erase(model.begin() + first, model.begin() + first + std::min(count, size - first));
        } else if (op == 5 && size > 0) {  // move through duplicates, possibly overlapping
            const int count = pick(1, size), from = pick(0, size - count), to = pick(0, size - count);
            ASSERT_EQ(qmStrList_moveMembers(list, to, from, count), 0);
            Model snapshot;
            for (int k = 0; k < count; ++k)
                snapshot.push_back(duplicate(model[static_cast<size_t>(from + k)], kFields));
            for (int k = 0; k < count; ++k) {
                const ModelMember& source = snapshot[static_cast<size_t>(k)];
                modelSet(model[static_cast<size_t>(to + k)], kFields,
                         source.text ? source.text->c_str() : nullptr, source.fields->data());
            }
            EXPECT_EQ(qmStrList_moveMembers(list, size - count + 1, from, count), ERR_FAILURE);
        } else if (op == 6) {  // round trip through an independent copy
            QmStrList* copy = qmStrList_create(pick(0, 3), kFields);
            ASSERT_EQ(qmStrList_copy(copy, list), 0);
            if (size > 0) qmStrList_setMember(list, 0, "changed", nullptr);
            ASSERT_EQ(qmStrList_copy(list, copy), 0);
            qmStrList_destroy(copy);
            for (ModelMember& member : model) member = duplicate(member, kFields);
        }
        ASSERT_NO_FATAL_FAILURE(expectMatches(list, model, kFields)) << "after step " << step;
    }
    qmStrList_destroy(list);
}
