#include "deck/ix_deck.hpp"

#include "unit/deck/deck_bench.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

struct IxDeckTest : testing::Test {
    void SetUp() override {
        console.screen = std::tmpfile();
        console.log = std::tmpfile();
        options.useRelativePath = true;
        options.dataFileBase = folder.path + "CASE";
    }
    void TearDown() override {
        std::fclose(console.screen);
        std::fclose(console.log);
    }
    [[nodiscard]] std::string said() const { return contentsOf(console.screen); }

    ScratchFolder folder;
    Console console;
    RunOptions options;
};
using IxDeckDeathTest = IxDeckTest;

TEST_F(IxDeckTest, TellsTheKindAndThePathOfAnInclude) {
    folder.write("CASE.afi", "INCLUDE \"a/b.ixf\" {type=\"ixf_model\"}\n");
    const std::vector<IxInclude> includes = readIxDeck(console, options);
    ASSERT_EQ(includes.size(), 1U);
    EXPECT_EQ(includes[0].path, "a/b.ixf");
    EXPECT_EQ(includes[0].type, "ixf_model");
    EXPECT_EQ(said(),
              "Type = ixf_model Path -> a/b.ixf\n"
              "FILE I/O -> END OF FILE DETECTED BEFORE STREAMLINE INFO..\n");
    EXPECT_EQ(contentsOf(console.log), said());
}

TEST_F(IxDeckTest, TellsEveryOtherLineAsNotSupported) {
    folder.write("CASE.afi", "SIMULATION ix {\n}\n");
    EXPECT_TRUE(readIxDeck(console, options).empty());
    EXPECT_EQ(said(),
              " SIMULATI -> not surpported  \n"
              " }        -> not surpported  \n"
              "FILE I/O -> END OF FILE DETECTED BEFORE STREAMLINE INFO..\n");
}

TEST_F(IxDeckTest, ReadsALineWhoseQuotesAreNotWhole) {
    EXPECT_EQ(ixIncludeOf("INCLUDE \"model.ixf").path, "model.ixf");
    EXPECT_EQ(ixIncludeOf("INCLUDE model.ixf").path, "");
    EXPECT_EQ(ixIncludeOf("INCLUDE \"model.ixf\" { type = }").type, "");
    EXPECT_EQ(ixIncludeOf("INCLUDE \"model.ixf\" \"no kind\"").type, "");
    EXPECT_EQ(ixIncludeOf("EXTENSION \"x\" INCLUDE \"model.ixf\" { type=\"epc\" }").path, "model.ixf");
}

TEST_F(IxDeckTest, TakesTheFirstOfItsThreeExtensions) {
    for (const char* extension : {".AFI", ".Afi", ".afi"}) {
        folder.write(std::string("CASE") + extension,
                     std::string("INCLUDE \"") + extension + "\" {type=\"x\"}\n");
        EXPECT_EQ(readIxDeck(console, options).front().path, extension);
    }
}

TEST_F(IxDeckTest, LooksForTheDefaultNameWithoutAGivenOne) {
    options.useRelativePath = false;
    EXPECT_EQ(ixDeckNames(options), std::vector<std::string>{"ECLIPSE.afi"});
}

TEST_F(IxDeckDeathTest, StopsWhereThereIsNoSuchFile) {
    console.screen = stderr;
    console.input = nullptr;
    EXPECT_EXIT(readIxDeck(console, options), testing::ExitedWithCode(1),
                "ERROR: File Open Error\nFile .*CASE.afi\n");
    console.screen = std::tmpfile();
}

}  // namespace
}  // namespace kvr
