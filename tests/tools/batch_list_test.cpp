#include "tools/batch/batch_list.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tools/batch/batch_answer.h"
#include "tools/file_bytes.h"

namespace stairmelt {
namespace {

namespace fs = std::filesystem;

class BatchList : public testing::Test {
protected:
    BatchList() : root(fs::path(testing::TempDir()) / "stairmelt batch") {
        fs::remove_all(root);
        for (const char* name :
             {"b.png", "a.PNG", "a.jpg", "ab.tif", "c.png.txt", "sub/a.png", "out/b.png", "e.png", "d.png"}) {
            fs::create_directories((root / name).parent_path());
            std::ofstream(root / name) << name;
        }
        fs::create_directory(root / "folder.png");
    }
    ~BatchList() override { fs::remove_all(root); }

    std::string Word(const std::string& name) const { return PathText(root / "") + name; }

    // "in > out" or "in: refusal" for each item, without the folder.
    std::vector<std::string> Listed(const std::vector<std::string>& names, const std::string& directory) const {
        std::vector<std::string> words, lines;
        for (const std::string& name : names) words.push_back(Word(name));
        for (const BatchItem& item : ListBatch(words, root / directory)) {
            const std::string in = item.in.lexically_relative(root).generic_string();
            const std::string out = item.out.lexically_relative(root).generic_string();
            lines.push_back(item.refusal.empty() ? in + " > " + out : in + ": " + item.refusal);
        }
        return lines;
    }

    const fs::path root;
};

using Lines = std::vector<std::string>;

TEST_F(BatchList, PatternsFindFilesByNameAndEachPictureComesOnce) {
    EXPECT_EQ(Listed({"e.png", "*.png", "b.png", "sub/../b.png"}, "new"),
              (Lines{"e.png > new/e.png", "a.PNG > new/a.PNG", "b.png > new/b.png", "d.png > new/d.png"}));
    EXPECT_EQ(Listed({"?.JP*", "a?.*", "*y*"}, "new"),
              (Lines{"a.jpg > new/a.png", "ab.tif > new/ab.tif", "*y*: no file matches"}));
    EXPECT_EQ(Listed({"none/*.png", "missing.png"}, "new"),
              (Lines{"none/*.png: no file matches", "missing.png > new/missing.png"}));
    EXPECT_EQ(Listed({"**a*b*"}, "new"), (Lines{"ab.tif > new/ab.tif"}));
    EXPECT_EQ(Listed({"f.jpe", "g.JPEG", "h.jfif"}, "new"),
              (Lines{"f.jpe > new/f.png", "g.JPEG > new/g.png", "h.jfif > new/h.png"}));
}

TEST_F(BatchList, NoResultTakesThePlaceOfAPictureOrAnotherResult) {
    EXPECT_EQ(Listed({"b.png"}, "."), (Lines{"b.png: its result would overwrite the picture itself"}));
    EXPECT_EQ(Listed({"sub/a.png", "a.PNG"}, ".")[0],
              "sub/a.png: its result would overwrite the picture " + Word("a.PNG"));
    EXPECT_EQ(Listed({"a.jpg", "a.PNG"}, "new")[1],
              "a.PNG: its result would overwrite that of " + Word("a.jpg"));
    EXPECT_EQ(Listed({"b.png"}, "out"), (Lines{"b.png > out/b.png"})) << "an earlier result may be replaced";
}

TEST(BatchLines, AreTakenWithoutWhatSurroundsThem) {
    EXPECT_EQ(LinesOf("\xEF\xBB\xBF a b.png \r\n\n\t\nc.png\n\"C:\\d e.png\"\n\"\n\"\""),
              (Lines{" a b.png", "c.png", "C:\\d e.png", "\"", "\"\""}));
    EXPECT_EQ(LinesOf(""), Lines{});
}

TEST(BatchAnswers, TravelAsLines) {
    for (const std::string line : {"smoothed\tbias 1\t123456\t", "smoothed\t\t0\tone\ttwo", "failed\t\t\ta: b"}) {
        const std::optional<BatchAnswer> answer = ParseAnswer(line);
        ASSERT_TRUE(answer.has_value()) << line;
        EXPECT_EQ(AnswerLine(*answer), line);
    }
    EXPECT_EQ(AnswerLine({false, "", 0, "one\ntwo\n"}), "failed\t\t\tone; two");
    for (const char* other : {"", "smoothed\t\t5", "smoothed\t\tx\t", "failed\t\t1\t", "hello\t\t\t"})
        EXPECT_FALSE(ParseAnswer(other).has_value()) << other;
}

}  // namespace
}  // namespace stairmelt
