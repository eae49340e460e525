#include "platform/desktop/DesktopPrograms.h"
#include "platform/desktop/Wallpaper.h"

#include "support/Support.h"

#include <QGuiApplication>

namespace programs = platform::DesktopPrograms;

namespace {

/// A user's folder with programs. What reads it asks for the folder once in a process.
struct DesktopProgramsTest : testing::Test {
    QTemporaryDir folder;

    DesktopProgramsTest() {
        qputenv("XDG_DATA_HOME", QFile::encodeName(folder.path()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.path()));
        qputenv("XDG_DATA_DIRS", "/usr/share");
    }
    void write(const QString& name, const QByteArray& content) const {
        // As a whole: who watches may look at once.
        support::writeFile(folder.filePath(u"new"_s), content);
        QDir().mkpath(QFileInfo(folder.filePath(name)).path());
        QFile::remove(folder.filePath(name));
        EXPECT_TRUE(QFile::rename(folder.filePath(u"new"_s), folder.filePath(name)));
    }
    void program(const QString& id, const QByteArray& more = {}) const {
        write(
            u"applications/"_s + id + u".desktop"_s,
            "[Desktop Entry]\nType=Application\nIcon=symbol\nExec=/bin/sh '" +
                folder.filePath(u"record"_s).toUtf8() + "' %F\nName=" + id.toUtf8() + '\n' + more);
    }
    static QString found(const QStringList& types) {
        QStringList names;
        for (const programs::Program& each : programs::programsFor(types))
            if (each.icon == u"symbol") names += each.name;
        return names.join(u' ');
    }
};

TEST_F(DesktopProgramsTest, thosePreferredComeFirstAndOnlyThoseForAllTypesAndChangesAreSeen) {
    for (const QString& id : {u"a"_s, u"b"_s, u"c"_s, u"kde/d"_s, u"map"_s})
        program(id);
    program(u"single"_s, "Exec=/bin/sh '" + folder.filePath(u"one"_s).toUtf8() + "' %f\n");
    program(u"hidden"_s, "NoDisplay=true\n");
    program(u"text"_s, "Terminal=true\n");
    program(u"else"_s, "OnlyShowIn=NoSuchDesktop;\n");
    program(u"gone"_s, "TryExec=/no/such/program\n");
    QGuiApplication::setDesktopFileName(u"org.own.Program"_s);
    program(u"org.own.Program"_s);
    const QByteArray geo = "x-scheme-handler/geo=map.desktop;\n";
    write(
        u"applications/mimeinfo.cache"_s,
        "[MIME Cache]\n"
        "image/png=a.desktop;b.desktop;kde-d.desktop;hidden.desktop;text.desktop;else.desktop;"
        "gone.desktop;org.own.Program.desktop;missing.desktop;../../evil.desktop;\n"
        "image/jpeg=b.desktop;a.desktop;\nimage/tiff=b.desktop;\n" +
            geo);
    EXPECT_EQ(found({u"image/png"_s}), u"a b kde/d"_s);
    EXPECT_EQ(found({u"image/png"_s, u"image/jpeg"_s}), u"a b"_s);
    EXPECT_EQ(found({u"image/x-adobe-dng"_s}), u"b"_s) << "one of those for TIFF files";
    EXPECT_EQ(found({u"image/none"_s}), QString());
    EXPECT_EQ(found({}), QString());
    EXPECT_TRUE(programs::hasProgramForScheme(u"geo"));
    EXPECT_FALSE(programs::hasProgramForScheme(u"ge"));

    write(
        u"mimeapps.list"_s, "[Default Applications]\nimage/png=b.desktop\n"
                            "[Added Associations]\nimage/png=c.desktop;\n"
                            "[Removed Associations]\nimage/png=a.desktop;\n" +
                                geo);
    EXPECT_TRUE(support::spinUntil([] { return found({u"image/png"_s}) == u"b c kde/d"_s; }))
        << found({u"image/png"_s}).toStdString();
    EXPECT_FALSE(programs::hasProgramForScheme(u"geo"));

    write(u"record"_s, "printf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.done\"");
    const QStringList files{folder.filePath(u"a 'b' ü"_s), folder.filePath(u"%c"_s)};
    for (const QString& file : files)
        support::writeFile(file, "x");
    const auto opener = programs::programsFor({u"image/png"_s}).front();
    EXPECT_TRUE(programs::open(opener, files));
    const QString done = folder.filePath(u"record.done"_s);
    EXPECT_TRUE(support::spinUntil([&] { return QFile::exists(done); }));
    EXPECT_EQ(support::readFile(done), files.join(u'\n').toUtf8() + '\n');
    // One that takes a single file is started for each.
    write(u"one"_s, "echo \"$#$1\" >> \"$0.done\"");
    EXPECT_TRUE(programs::open({.id = u"single.desktop"_s, .name = {}, .icon = {}}, files));
    EXPECT_TRUE(support::spinUntil([&] {
        const QByteArray runs = support::readFile(folder.filePath(u"one.done"_s));
        return std::ranges::all_of(files, [&runs](const QString& file) {
            return runs.contains('1' + file.toUtf8() + '\n');
        });
    }));
    EXPECT_FALSE(programs::open({.id = u"none.desktop"_s, .name = {}, .icon = {}}, files));
}

TEST(WallpaperTest, desktopsAreToldOfTheirPictureInTheirOwnWay) {
    const QString uri = u"background picture-uri 'file:///a%20b\\'c'"_s;
    const std::pair<QString, QString> table[] = {
        {u"ubuntu:GNOME"_s, u"gsettings set org.gnome.desktop."_s + uri},
        {u"X-Cinnamon"_s, u"gsettings set org.cinnamon.desktop."_s + uri},
        {u"MATE"_s, u"gsettings set org.mate.background picture-filename '/a b\\'c'"_s},
        {u"KDE"_s, u"plasma-apply-wallpaperimage /a b'c"_s},
        {u"XFCE"_s, u"xfconf-query -c xfce4-desktop -l"_s},
        {u"sway"_s, QString()},
    };
    for (const auto& [desktop, last] : table) {
        const auto lines = platform::Wallpaper::commandLines(desktop, u"/a b'c"_s);
        EXPECT_EQ(lines.empty() ? QString() : lines.back().join(u' '), last);
    }
}

} // namespace
