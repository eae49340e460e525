#include "platform/desktop/DesktopPrograms.h"
#include "platform/desktop/Wallpaper.h"

#include "support/Support.h"

using platform::DesktopPrograms::Program;
namespace programs = platform::DesktopPrograms;

namespace {

struct DesktopProgramsTest : testing::Test {
    QTemporaryDir folder;
    platform::SchemeHandlers::Places places{
        .lists = {folder.filePath(u"config"_s), folder.filePath(u"applications"_s)},
        .applications = {folder.filePath(u"applications"_s)}};

    DesktopProgramsTest() {
        for (const QString& name : {u"config"_s, u"applications"_s, u"applications/kde"_s})
            QDir(folder.path()).mkpath(name);
    }
    void program(const QString& id, const QByteArray& more = {}) const {
        support::writeFile(
            folder.filePath(u"applications/"_s + id + u".desktop"_s),
            "[Desktop Entry]\nType=Application\nName=" + id.toUtf8() + "\nExec=/bin/sh %F\n" +
                more + "[Desktop Action x]\nExec=nothing\n");
    }
    QString found(const QStringList& types) const {
        QStringList names;
        for (const Program& each : programs::programsFor(types, places))
            names += each.name;
        return names.join(u' ');
    }
};

TEST_F(DesktopProgramsTest, thosePreferredComeFirstAndOnlyThoseForAllTypes) {
    for (const QString& id : {u"a"_s, u"b"_s, u"c"_s, u"kde/d"_s})
        program(id);
    program(u"hidden"_s, "NoDisplay=true\n");
    program(u"text"_s, "Terminal=true\n");
    program(u"else"_s, "OnlyShowIn=NoSuchDesktop;\n");
    program(u"gone"_s, "TryExec=/no/such/program\n");
    program(u"velmora"_s);
    support::writeFile(
        folder.filePath(u"applications/mimeinfo.cache"_s),
        "[MIME Cache]\n"
        "image/png=a.desktop;b.desktop;kde-d.desktop;hidden.desktop;text.desktop;else.desktop;"
        "gone.desktop;velmora.desktop;missing.desktop;../../evil.desktop;\n"
        "image/jpeg=b.desktop;a.desktop;\n");
    EXPECT_EQ(found({u"image/png"_s}), u"a b kde/d"_s);
    EXPECT_EQ(found({u"image/png"_s, u"image/jpeg"_s}), u"a b"_s);
    support::writeFile(
        folder.filePath(u"config/mimeapps.list"_s),
        "[Default Applications]\nimage/png=b.desktop\n"
        "[Added Associations]\nimage/png=c.desktop;\n"
        "[Removed Associations]\nimage/png=a.desktop;\n");
    EXPECT_EQ(found({u"image/png"_s}), u"b c kde/d"_s);
    EXPECT_EQ(found({u"image/none"_s}), QString());
    EXPECT_EQ(found({}), QString());
}

TEST_F(DesktopProgramsTest, commandLinesTakeFilesAsTheDesktopFileSays) {
    const std::tuple<QString, QString> table[] = {
        {u"view %F"_s, u"view|/a b|/c"_s},
        {u"view %U --x"_s, u"view|file:///a%20b|file:///c|--x"_s},
        {u"view --file=%f"_s, u"view|--file=/a b//view|--file=/c"_s},
        {u"view %u"_s, u"view|file:///a%20b//view|file:///c"_s},
        {u"\"my view\" \"a \\\"b\\\" \\$c\" %F"_s, u"my view|a \"b\" $c|/a b|/c"_s},
        {u"view"_s, u"view|/a b//view|/c"_s},
        {u"view %i %c 100%% %m %F"_s, u"view|--icon|symbol|Viewer|100%|/a b|/c"_s},
        {u"view \"open"_s, QString()},
    };
    for (const auto& [exec, expected] : table) {
        QStringList lines;
        for (const QStringList& line : programs::commandLines(
                 {.id = {},
  .name = u"Viewer"_s,
  .icon = u"symbol"_s,
  .exec = exec,
  .path = {},
  .folder = {}},
                 {u"/a b"_s, u"/c"_s}))
            lines += line.join(u'|');
        EXPECT_EQ(lines.join(u"//"_s), expected) << exec.toStdString();
    }
}

TEST_F(DesktopProgramsTest, desktopsAreToldOfTheirPictureInTheirOwnWay) {
    const std::pair<QString, QString> table[] = {
        {u"GNOME"_s, u"gsettings set org.gnome.desktop.background picture-uri file:///a%20b"_s},
        {u"ubuntu:GNOME"_s,
         u"gsettings set org.gnome.desktop.background picture-uri file:///a%20b"_s},
        {u"X-Cinnamon"_s,
         u"gsettings set org.cinnamon.desktop.background picture-uri file:///a%20b"_s},
        {u"MATE"_s, u"gsettings set org.mate.background picture-filename /a b"_s},
        {u"KDE"_s, u"plasma-apply-wallpaperimage /a b"_s},
        {u"XFCE"_s, u"xfconf-query -c xfce4-desktop -l"_s},
        {u"sway"_s, QString()},
    };
    for (const auto& [desktop, last] : table) {
        const auto lines = platform::Wallpaper::commandLines(desktop, u"/a b"_s);
        EXPECT_EQ(lines.empty() ? QString() : lines.back().join(u' '), last);
    }
}

} // namespace
