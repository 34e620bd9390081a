// File names (worked cases, round trips on generated paths, buffer limits), identifiers (text
// round trips, version and variant bits, no repeats), and the log file.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "korvelbase/qmfilename.h"
#include "korvelbase/qmguid.h"
#include "korvelbase/qmlogfile.h"

namespace {

// A destination of exactly 260 characters inside a guarded buffer.
struct PathBuffer {
    static constexpr std::size_t kGuard = 64;
    char bytes[QM_FILENAME_PATH_SIZE + 2 * kGuard];
    PathBuffer() { std::memset(bytes, 0x5A, sizeof bytes); }
    char* get() { return bytes + kGuard; }
    std::string text() { return get(); }
    bool guardsIntact() const {
        for (std::size_t i = 0; i < kGuard; ++i) {
            if (bytes[i] != 0x5A || bytes[kGuard + QM_FILENAME_PATH_SIZE + i] != 0x5A) return false;
        }
        return true;
    }
};

std::string common(const char* a, const char* b, int* status = nullptr) {
    PathBuffer d;
    const int s = qmFilename_getCommonPath(d.get(), a, b);
    if (status != nullptr) *status = s;
    EXPECT_TRUE(d.guardsIntact());
    return d.text();
}

std::string express(const std::string& base, const std::string& target) {
    PathBuffer d;
    EXPECT_EQ(qmFilename_expressUsingRelativePath(d.get(), base.c_str(), target.c_str()), 0)
        << base << " " << target;
    return d.text();
}

std::string join(const std::string& base, const std::string& relative) {
    PathBuffer d;
    EXPECT_EQ(qmFilename_fromRelativePath(d.get(), base.c_str(), relative.c_str()), 0);
    EXPECT_TRUE(d.guardsIntact());
    return d.text();
}

TEST(Filenames, WorkedCases) {
    EXPECT_EQ(common("C:\\X\\Y\\a.txt", "C:\\X\\Z\\b.txt"), "C:\\X");
    EXPECT_EQ(common("C:\\A", "D:\\A"), "");
    EXPECT_EQ(common("C:\\X\\f.TXT", "c:\\x\\F.txt"), "C:\\X\\f.TXT");  // equal but for case
    EXPECT_EQ(common("C:\\X", "C:\\X\\W\\f.txt"), "C:");  // the last component is given up
    int status = 0;
    common("", "C:\\X", &status);
    EXPECT_EQ(status, ERR_FAILURE);
    EXPECT_EQ(express("C:\\X\\Y\\Z", "C:\\X\\W\\f.txt"), "\\..\\..\\W\\f.txt");
    EXPECT_EQ(express("C:\\X", "C:\\X\\W\\f.txt"), "\\..\\X\\W\\f.txt");
    EXPECT_EQ(join("C:\\X", "\\..\\X\\W\\f.txt"), "C:\\X\\W\\f.txt");
    PathBuffer d;
    EXPECT_EQ(qmFilename_expressUsingRelativePath(d.get(), "C:\\A", "D:\\B"), ERR_FAILURE);
    // Relative path: a substring test, then "\.." per component.
    EXPECT_EQ(qmFilename_getRelativePath(d.get(), "C:\\X\\Y\\f.txt", "c:\\x"), 0);
    EXPECT_EQ(d.text(), "\\Y\\f.txt");
    EXPECT_EQ(qmFilename_getRelativePath(d.get(), "C:\\X", "C:\\X\\Y\\\\Z\\"), 0);
    EXPECT_EQ(d.text(), "\\..\\..");
    EXPECT_EQ(qmFilename_getRelativePath(d.get(), "C:\\A", "D:\\B"), ERR_FAILURE);
    EXPECT_EQ(d.text(), "");
}

TEST(Filenames, ResolvingAndItsSideEffect) {
    const struct {
        const char* path;
        const char* resolved;
        const char* callerAfter;
    } cases[] = {
        {"C:\\X\\Y\\..\\Z", "C:\\X\\Z", "C:\\X\\Z"},
        {"C:\\X\\..\\..\\Z", "C:\\..\\Z", "C:\\..\\Z"},
        {"C:\\A\\B\\C\\..\\..\\D", "C:\\A\\D", "C:\\A\\B\\..\\D"},  // the caller loses one pair
        {"\\..\\X", "\\..\\X", "\\..\\X"},
        {"C:\\X\\Y\\..x", "C:\\Xx", "C:\\Xx"},  // "\.." matches whatever follows
    };
    for (const auto& c : cases) {
        PathBuffer d;
        char path[64];
        std::strcpy(path, c.path);
        EXPECT_EQ(qmFilename_resolveRelativePath(d.get(), path), 0);
        EXPECT_EQ(d.text(), c.resolved) << c.path;
        EXPECT_STREQ(path, c.callerAfter) << c.path;
    }
}

TEST(Filenames, RoundTripsOnGeneratedPathsAndLimits) {
    std::mt19937 random(8);
    const auto name = [&](int length) {
        std::string s;
        for (int i = 0; i < length; ++i) s += char('a' + random() % 26);
        return s;
    };
    for (int trial = 0; trial < 300; ++trial) {
        std::string shared = "C:";
        for (int k = random() % 4 + 1; k > 0; --k) shared += "\\" + name(random() % 6 + 2);
        std::string base = shared, target = shared;
        for (int k = random() % 4; k > 0; --k) base += "\\B" + name(random() % 5 + 1);
        for (int k = random() % 4; k > 0; --k) target += "\\T" + name(random() % 5 + 1);
        target += "\\file.txt";
        EXPECT_EQ(join(base, express(base, target)), target) << base << " " << target;
    }
    // Nothing beyond 260 characters, whatever the input lengths.
    const std::string huge = "C:\\" + std::string(700, 'q') + "\\" + std::string(300, 'r');
    EXPECT_EQ(common(huge.c_str(), huge.c_str()).size(), QM_FILENAME_PATH_SIZE - 1u);
    PathBuffer d;
    std::vector<char> editable(huge.begin(), huge.end());
    editable.push_back('\0');
    EXPECT_EQ(qmFilename_resolveRelativePath(d.get(), editable.data()), 0);
    EXPECT_TRUE(d.guardsIntact());
    EXPECT_EQ(qmFilename_fromRelativePath(d.get(), huge.c_str(), huge.c_str()), 0);
    EXPECT_TRUE(d.guardsIntact());
    EXPECT_EQ(qmFilename_fromRelativePath(d.get(), "", ""), ERR_FAILURE);
    EXPECT_EQ(qmFilename_fromRelativePath(d.get(), nullptr, "x"), ERR_FAILURE);
}

std::u16string text(const QmGuid& g, bool braces = true) {
    QmChar16 buffer[QM_GUID_TEXT_SIZE];
    std::fill(std::begin(buffer), std::end(buffer), u'#');
    if (braces) {
        EXPECT_EQ(qmGuid_toString(buffer, &g), 0);
    } else {
        EXPECT_EQ(qmGuid_toStringNoBrackets(buffer, &g), 0);
    }
    return std::u16string(buffer);
}

TEST(Guids, TextRoundTripsVersionBitsAndNoRepeats) {
    std::set<std::u16string> seen;
    for (int i = 0; i < 100000; ++i) {
        QmGuid g;
        ASSERT_EQ(qmGuid_generate(&g), 0);
        EXPECT_EQ(g.Data3 >> 12, 4);             // version 4
        EXPECT_EQ(g.Data4[0] & 0xC0, 0x80);      // RFC 4122 variant
        const std::u16string t = text(g);
        ASSERT_EQ(t.size(), 38u);
        EXPECT_TRUE(seen.insert(t).second);
        if (i % 1000 == 0) {
            QmGuid back;
            ASSERT_EQ(qmGuid_fromString(&back, t.c_str()), 0);
            EXPECT_EQ(qmGuid_equal(&back, &g), 1);
            EXPECT_EQ(text(g, false), t.substr(1, 36));
        }
    }
}

TEST(Guids, TextFormParsingAndBytewiseOrder) {
    QmGuid g;
    const std::u16string lower = u"{0123abcd-4567-89ef-0a1b-2c3d4e5f6a7b}";
    ASSERT_EQ(qmGuid_fromString(&g, lower.c_str()), 0);
    EXPECT_EQ(g.Data1, 0x0123ABCDu);
    EXPECT_EQ(g.Data2, 0x4567u);
    EXPECT_EQ(g.Data3, 0x89EFu);
    EXPECT_EQ(g.Data4[0], 0x0A);
    EXPECT_EQ(g.Data4[7], 0x7B);
    EXPECT_EQ(text(g), u"{0123ABCD-4567-89EF-0A1B-2C3D4E5F6A7B}");
    for (const char16_t* bad : {u"", u"0123abcd-4567-89ef-0a1b-2c3d4e5f6a7b", u"{0123abcd-4567-89ef-0a1b-2c3d4e5f6a7}",
                                u"{0123abcd-4567-89ef-0a1b-2c3d4e5f6a7bb}", u"{0123abcd_4567-89ef-0a1b-2c3d4e5f6a7b}",
                                u"{0123abcg-4567-89ef-0a1b-2c3d4e5f6a7b}", u"{"}) {
        EXPECT_EQ(qmGuid_fromString(&g, bad), static_cast<int32_t>(0x800401F4u));
    }
    // Memory order: Data1 is little-endian here, so the text order and byte order differ.
    QmGuid a{}, b{};
    a.Data1 = 0x00000100;  // bytes 00 01 00 00
    b.Data1 = 0x00010000;  // bytes 00 00 01 00
    EXPECT_EQ(qmGuid_compare(&a, &b), 1);  // a's text is the smaller
    EXPECT_EQ(qmGuid_compare(&b, &a), -1);
    EXPECT_EQ(qmGuid_compare(&a, &a), 0);
    QmGuid c;
    qmGuid_copy(&c, &a);
    EXPECT_EQ(qmGuid_equal(&c, &a), 1);
    EXPECT_EQ(qmGuid_isClear(&c), 0);
    qmGuid_clear(&c);
    EXPECT_EQ(qmGuid_isClear(&c), 1);
    EXPECT_EQ(qmGuid_clear(nullptr), 0);
    EXPECT_EQ(qmGuid_copy(nullptr, &a), 0);
}

TEST(LogFile, OpenWriteClose) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "kb-log-test.txt";
    EXPECT_EQ(qmLogFile_write("nothing open %d", 1), ERR_FAILURE);
    EXPECT_EQ(qmLogFile_close(), ERR_FAILURE);
    ASSERT_EQ(qmLogFile_open(path.string().c_str()), 0);
    EXPECT_EQ(qmLogFile_write("station %d level %s", 12, "ok"), 0);
    EXPECT_EQ(qmLogFile_write("second"), 0);
    EXPECT_EQ(qmLogFile_close(), 0);
    std::stringstream all;
    {
        std::ifstream in(path, std::ios::binary);  // closed before the file is removed
        all << in.rdbuf();
    }
#if defined(_WIN32)
    EXPECT_EQ(all.str(), "station 12 level ok\r\nsecond\r\n");  // a text-mode file
#else
    EXPECT_EQ(all.str(), "station 12 level ok\nsecond\n");
#endif
    EXPECT_EQ(qmLogFile_open((path.parent_path() / "no-such-folder" / "x.txt").string().c_str()), ERR_FAILURE);
    std::filesystem::remove(path);
}

}  // namespace
