// The reference-counted object base and the system and array helpers: counts, copies and
// class data; swaps, reversal and duplicate removal against plain references; the process
// start really starting a program (and splitting its command line as Windows does).
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "korvelbase/qmobject.hpp"
#include "korvelbase/qmutil.h"

namespace {

class Counted : public QmObject {
public:
    Counted() = default;
    std::uint32_t count() const { return getReferenceCount(); }
    std::uint32_t addRef() { return internalAddRef(); }
    std::uint32_t release() { return internalRelease(); }
    std::uint32_t setId(std::uint32_t id) { return internalSetClsId(id); }
    std::uint32_t id() { return internalGetClsId(); }
    void setData(long long v) { setUserData(v); }
    long long data() const {
        long long v = 0;
        getUserData(v);
        return v;
    }
};

TEST(QmObject, CountsCopiesAndClassData) {
    Counted object;
    EXPECT_EQ(object.count(), 0u);
    EXPECT_EQ(object.data(), 0);
    EXPECT_EQ(object.release(), 4294967295u);  // the unsigned wrap; the object lives on
    EXPECT_EQ(object.addRef(), 0u);            // AddRef reports 0, not the count
    EXPECT_EQ(object.count(), 0u);
    for (int i = 0; i < 3; ++i) object.addRef();
    EXPECT_EQ(object.count(), 3u);
    EXPECT_EQ(object.release(), 2u);
    object.addRef();
    EXPECT_EQ(object.setId(0xC0FFEEu), 0u);
    object.setData(-1234567890123LL);
    const Counted copy(object);  // a copy starts with its source's count
    EXPECT_EQ(copy.count(), 3u);
    Counted assigned;
    assigned = object;
    EXPECT_EQ(assigned.count(), 3u);
    EXPECT_EQ(assigned.id(), 0xC0FFEEu);
    EXPECT_EQ(assigned.data(), -1234567890123LL);
}

TEST(SystemUtils, SwapsExtremesAndByteOrder) {
    double a = 1.5, b = -2.5;
    qmUtil_swapDouble(&a, &b);
    EXPECT_EQ(a, -2.5);
    float f = 1.0f, g = 2.0f;
    qmUtil_swapFloat(&f, &g);
    EXPECT_EQ(f, 2.0f);
    int i = 7, j = 9;
    qmUtil_swapInt(&i, &j);
    EXPECT_EQ(i, 9);
    int32_t l = -1, m = 5;
    qmUtil_swapLong(&l, &m);
    EXPECT_EQ(l, 5);
    std::vector<unsigned char> x(1000), y(1000);
    for (int k = 0; k < 1000; ++k) {
        x[k] = static_cast<unsigned char>(k);
        y[k] = static_cast<unsigned char>(255 - k % 256);
    }
    const auto x0 = x, y0 = y;
    qmUtil_swapMem(x.data(), y.data(), 1000);  // larger than one chunk of the swap
    EXPECT_EQ(x, y0);
    EXPECT_EQ(y, x0);
    EXPECT_EQ(qmUtil_getGreaterInteger(-3, 2), 2);
    EXPECT_EQ(qmUtil_getSmallerInteger(-3, 2), -3);
    short s[2] = {0x1234, 0x5678};
    EXPECT_EQ(qmUtil_swapBytesShortArray(s, 0, 2), 0);  // n = 2 changes nothing
    EXPECT_EQ(s[0], 0x1234);
    qmUtil_swapBytesShortArray(s, 99, 1);
    EXPECT_EQ(s[0], 0x3412);
    EXPECT_EQ(s[1], 0x5678);
}

TEST(SystemUtils, ReverseAndDuplicateRemovalAgreeWithReferences) {
    for (int n : {0, 1, 2, 5, 6}) {
        std::vector<double> v(static_cast<std::size_t>(n));
        for (int k = 0; k < n; ++k) v[static_cast<std::size_t>(k)] = k * 1.5;
        std::vector<double> expected(v.rbegin(), v.rend());
        qmUtil_reverseArray(v.data(), n, sizeof(double));
        EXPECT_EQ(v, expected) << n;
    }
    int32_t worked[] = {5, 1, 5, 5, 2, 1};
    int count = 6;
    EXPECT_EQ(qmUtil_removeDuplicatesFromLongArray(worked, &count), 0);
    ASSERT_EQ(count, 3);
    EXPECT_EQ(worked[0], 5);
    EXPECT_EQ(worked[1], 1);
    EXPECT_EQ(worked[2], 2);
    std::mt19937 random(4);
    for (int trial = 0; trial < 50; ++trial) {
        std::uniform_int_distribution<int32_t> value(-20, 20);
        std::vector<int32_t> data(static_cast<std::size_t>(trial * 7));
        for (auto& d : data) d = value(random);
        std::vector<int32_t> reference;  // first occurrences in first-seen order
        for (const int32_t d : data) {
            if (std::find(reference.begin(), reference.end(), d) == reference.end()) reference.push_back(d);
        }
        int n = static_cast<int>(data.size());
        qmUtil_removeDuplicatesFromLongArray(data.data(), &n);
        data.resize(static_cast<std::size_t>(n));
        EXPECT_EQ(data, reference);
    }
    EXPECT_EQ(qmUtil_removeDuplicatesFromLongArray(nullptr, &count), ERR_FAILURE);
    EXPECT_EQ(qmUtil_removeDuplicatesFromLongArray(worked, nullptr), ERR_FAILURE);
}

TEST(SystemUtils, OperatingSystemQueries) {
#if defined(_WIN32)
    EXPECT_EQ(qmUtil_getOperatingSystem(), 2);
#else
    EXPECT_EQ(qmUtil_getOperatingSystem(), 2);
    EXPECT_EQ(qmUtil_isOperatingSystemWindowsXP(), 0);
#endif
}

// Waits up to five seconds for a file to hold text; returns what it holds.
std::string waitForFile(const std::filesystem::path& path) {
    for (int tries = 0; tries < 100; ++tries) {
        std::ifstream in(path);
        std::stringstream text;
        text << in.rdbuf();
        if (!text.str().empty()) return text.str();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return "";
}

TEST(SystemUtils, AStartedProcessRunsAndAMissingOneFails) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "kb-process-test.txt";
    std::filesystem::remove(file);
#if defined(_WIN32)
    std::string line = "cmd /c echo started> \"" + file.string() + "\"";
    ASSERT_EQ(qmUtil_createWindowsProcess(&line[0]), 0);
    EXPECT_EQ(waitForFile(file).substr(0, 7), "started");
#else
    // Quoting by the Windows rules: the script is one argument, "a b" another.
    std::string line = "sh -c \"printf '%s|%s' \\\"$0\\\" \\\"$1\\\" > '" + file.string() + "'\" \"a b\" c";
    ASSERT_EQ(qmUtil_createWindowsProcess(&line[0]), 0);
    EXPECT_EQ(waitForFile(file), "a b|c");
#endif
    std::filesystem::remove(file);
    std::string missing = "kb-no-such-program-anywhere --flag";
    EXPECT_EQ(qmUtil_createWindowsProcess(&missing[0]), ERR_FAILURE);
    std::string blank = "   ";
    EXPECT_EQ(qmUtil_createWindowsProcess(&blank[0]), ERR_FAILURE);
    EXPECT_EQ(qmUtil_createWindowsProcess(nullptr), ERR_FAILURE);
}

}  // namespace
