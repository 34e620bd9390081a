// A string list driven by an operation sequence decoded from the bytes, compared after every
// operation with a model of (text, fields) rows.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.hpp"
#include "korvelbase/strlist.h"

namespace {

constexpr int kFields = 2;
constexpr int kMostMembers = 200;
constexpr std::size_t kMostTextBytes = 40;

struct Row {
    std::string text;  // "" stands for a member without text
    std::vector<int> fields = std::vector<int>(kFields, 0);
};

void expectSame(const QmStrList* list, const std::vector<Row>& model) {
    if (qmStrList_size(list) != static_cast<int>(model.size())) std::abort();
    for (std::size_t i = 0; i < model.size(); ++i) {
        const char* text = nullptr;
        int* fields = nullptr;
        if (qmStrList_getMember(&text, &fields, list, static_cast<int>(i)) != 0) std::abort();
        if (model[i].text != (text != nullptr ? text : "")) std::abort();
        if (text != nullptr && text[0] == '\0') std::abort();  // empty text is stored as null
        for (int f = 0; f < kFields; ++f) {
            int value = -1;
            qmStrList_getInfoField(&value, list, static_cast<int>(i), f);
            if (value != model[i].fields[static_cast<std::size_t>(f)]) std::abort();
        }
    }
}

std::string takeText(kbfuzz::Input& input) {
    const int length = input.takeInt(0, static_cast<int>(kMostTextBytes));
    std::string text;
    for (int i = 0; i < length; ++i) {
        const auto c = input.take<char>();
        if (c == '\0') break;
        text.push_back(c);
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kbfuzz::Input input(data, size);
    const int initial = input.takeInt(0, 20);
    QmStrList* list = qmStrList_create(initial, kFields);
    if (list == nullptr) std::abort();
    std::vector<Row> model(static_cast<std::size_t>(initial));
    while (!input.empty()) {
        const int count = static_cast<int>(model.size());
        switch (input.takeInt(0, 5)) {
            case 0: {  // set text (null keeps it) and fields
                const int index = input.takeInt(-1, count);
                const bool keepText = input.take<std::uint8_t>() % 4 == 0;
                const std::string text = takeText(input);
                const int fields[kFields] = {input.take<int>(), input.take<int>()};
                const int status = qmStrList_setMember(list, index, keepText ? nullptr : text.c_str(), fields);
                const bool valid = index >= 0 && index < count;
                if (status != (valid ? 0 : ERR_FAILURE)) std::abort();
                if (valid) {
                    Row& row = model[static_cast<std::size_t>(index)];
                    if (!keepText) row.text = text;
                    row.fields.assign(fields, fields + kFields);
                }
                break;
            }
            case 1: {  // insert empty members
                const int n = input.takeInt(1, 8);
                const int index = input.takeInt(-1, count);
                if (count + n > kMostMembers) break;
                int at = -5;
                if (qmStrList_insertMember(&at, list, index, n) != 0) std::abort();
                const int first = index == -1 ? count : index;
                if (at != (index == -1 ? count + n - 1 : index)) std::abort();
                model.insert(model.begin() + first, static_cast<std::size_t>(n), Row{});
                break;
            }
            case 2: {  // delete a range, cut at the end
                const int first = input.takeInt(-1, count);
                const int n = input.takeInt(0, 6);
                const int status = qmStrList_deleteMember(list, first, n);
                if (n < 1) {
                    if (status != 0) std::abort();
                    break;
                }
                const bool valid = first >= 0 && first < count;
                if (status != (valid ? 0 : ERR_FAILURE)) std::abort();
                if (valid) {
                    const int last = first + n > count ? count : first + n;
                    model.erase(model.begin() + first, model.begin() + last);
                }
                break;
            }
            case 3: {  // copy one range onto another through a snapshot
                const int n = input.takeInt(1, 5);
                const int from = input.takeInt(0, count);
                const int to = input.takeInt(0, count);
                const int status = qmStrList_moveMembers(list, to, from, n);
                const bool valid = from + n <= count && to + n <= count;
                if (status != (valid ? 0 : ERR_FAILURE)) std::abort();
                if (valid) {
                    const std::vector<Row> snapshot = model;
                    // Each target is set from its source's snapshot copy with the setting
                    // rule: a source without text keeps the target's text; the snapshot
                    // always has fields (zero-filled when the source had none).
                    for (int k = 0; k < n; ++k) {
                        const Row& source = snapshot[static_cast<std::size_t>(from + k)];
                        Row& target = model[static_cast<std::size_t>(to + k)];
                        if (!source.text.empty()) target.text = source.text;
                        target.fields = source.fields;
                    }
                }
                break;
            }
            case 4: {  // a copy into another list reads back equal
                QmStrList* copy = qmStrList_create(input.takeInt(0, 3), kFields);
                if (copy == nullptr || qmStrList_copy(copy, list) != 0) std::abort();
                expectSame(copy, model);
                qmStrList_destroy(copy);
                break;
            }
            default: {  // lookup by text finds the first equal member
                const std::string text = takeText(input);
                int expected = -1;
                for (std::size_t i = 0; i < model.size() && !text.empty(); ++i) {
                    if (model[i].text == text) {
                        expected = static_cast<int>(i);
                        break;
                    }
                }
                const int found = qmStrList_getMemberIndex(list, text.c_str());
                if (!text.empty() && found != expected) std::abort();
                break;
            }
        }
        expectSame(list, model);
    }
    qmStrList_destroy(list);
    return 0;
}
