#include "app/CommandLine.h"

#include "support/Support.h"

namespace {

std::variant<CommandLineOptions, CommandLineExit> parse(const char* line) {
    return parseCommandLine(QStringList{u"velmora"_s} + support::words(line));
}

TEST(CommandLineTest, everyOptionIsRead) {
    const auto options = std::get<CommandLineOptions>(
        parse("--profile /p/ --add a --add /b/../c --until-idle --screenshot s.png --size 800x600 "
              "--stats - --theme dark --state --fullscreen --slideshow x.jpg file:///y%20z "
              "file:"));
    const QString here = QDir::currentPath();
    EXPECT_EQ(
        (QStringList{options.profile, options.screenshot, options.stats}),
        support::words("/p s.png -"));
    EXPECT_EQ(options.add, (QStringList{here + u"/a"_s, u"/c"_s}));
    EXPECT_TRUE(options.untilIdle && options.state && options.isFullScreen && options.isSlideshow);
    EXPECT_EQ(restartArguments(options), support::words("--profile /p --theme dark"));
    EXPECT_EQ(options.size, QSize(800, 600));
    EXPECT_EQ(options.dark, true);
    EXPECT_EQ(std::get<CommandLineOptions>(parse("--theme light")).dark, false);
    EXPECT_EQ(options.paths, (QStringList{here + u"/x.jpg"_s, u"/y z"_s, here + u"/file:"_s}))
        << "never the present folder itself";
}

TEST(CommandLineTest, mistakesAreOneSentenceAndCodeTwo) {
    const QStringList unnamed{u"velmora"_s, QString()};
    EXPECT_EQ(std::get<CommandLineExit>(parseCommandLine(unnamed)).code, 2);
    for (const char* line :
         {"--no-such-option", "--size 800", "--size 0x10", "--size 800x600x1", "--profile",
          "--screenshot s.png", "--theme blue", "--until-idle=yes", "--service x.jpg"}) {
        SCOPED_TRACE(line);
        const auto exit = std::get<CommandLineExit>(parse(line));
        EXPECT_EQ(exit.code, 2);
        EXPECT_TRUE(exit.text.startsWith(u"velmora: ") && !exit.text.contains(u'\n'));
    }
}

} // namespace
