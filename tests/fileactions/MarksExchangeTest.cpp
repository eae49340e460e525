#include "fileactions/marks/MarksExchange.h"
#include "catalogue/MarksSupport.h"

namespace {

/// What a line says, in words; "-" for one that is none.
QString read(const QByteArray& line) {
    const auto plan = fileactions::planImport(line, [](const QByteArray&) { return 0; });
    if (plan.hasBadLines) return u"-"_s;
    if (plan.edit.paths.empty()) return {};
    const auto& [path, change] = plan.edit.paths.front();
    QStringList said{QString::fromLatin1(path.toPercentEncoding("/"))};
    if (change.stars) said.append(u"stars "_s + QString::number(*change.stars));
    if (change.flag) said.append(*change.flag ? u"flag"_s : u"no flag"_s);
    if (change.tags) said.append(u"tags "_s + change.tags->join(u'+'));
    if (change.rotation)
        said.append(
            *change.rotation ? u"turned "_s + QString::number(**change.rotation) : u"not turned"_s);
    return said.join(u", "_s);
}

} // namespace

TEST(MarksExchangeTest, eachLineIsOnePhotographOrNone) {
    for (
        const auto& [line, said] : std::map<QByteArray, QString>{
            {R"({"path": "/a/b.jpg", "stars": 4, "flag": true, "tags": ["x", " y "], "rotation": 90})",
             u"/a/b.jpg, stars 4, flag, tags x+y, turned 90"_s},
            {R"({"path": "/a//b.jpg", "stars": 0, "flag": false, "tags": [], "rotation": 0})",
             u"/a/b.jpg, stars 0, no flag, tags , not turned"_s},
            {R"({"path": "/a", "rotation": 360})", u"/a, turned 0"_s},
            {R"({"path": "/a", "rotation": -90})", u"/a, turned 270"_s},
            {R"({"path": "/a"})", u"/a"_s},
            {R"({"pathBytes": "L2H/"})", u"/a%FF"_s},
            {"  \r", {}},
            {R"({"path": "a.jpg", "stars": 4})", u"-"_s},
            {R"({"stars": 4})", u"-"_s},
            {R"({"path": "/a", "stars": 6})", u"-"_s},
            {R"({"path": "/a", "stars": 2.5})", u"-"_s},
            {R"({"path": "/a", "flag": 1})", u"-"_s},
            {R"({"path": "/a", "tags": "x"})", u"-"_s},
            {R"({"path": "/a", "tags": [1]})", u"-"_s},
            {R"({"path": "/a", "rotation": 45})", u"-"_s},
            {R"({"path": "/a", "star": 4})", u"-"_s},
            {R"({"path": "/a", "pathBytes": "L2E="})", u"-"_s},
            {R"({"pathBytes": "L2H/*"})", u"-"_s},
            {R"({"path": "/a", "stars": 4)", u"-"_s}})
        EXPECT_EQ(read(line), said) << line.toStdString();
    const auto plan = fileactions::planImport(
        "{\"path\":\"/a\",\"stars\":1,\"flag\":true}\nno\n{\"path\":\"/a\",\"stars\":2}\n\n[]\n"
        "{\"path\":\"/b\",\"flag\":true,\"stars\":2}",
        [](const QByteArray& path) { return path == "/a" ? 7 : 8; });
    const QString told = u"line %1 is no photograph with marks; it is left out"_s;
    EXPECT_EQ(plan.told, (QStringList{told.arg(2), told.arg(5)}));
    ASSERT_EQ(plan.edit.photographs.size(), 1U) << "equal changes are one";
    EXPECT_EQ(plan.edit.photographs[0].fileIds, (std::vector<qint64>{7, 8}));
    EXPECT_EQ(plan.edit.photographs[0].change.stars, 2) << "the later line counts";
    EXPECT_EQ(plan.edit.photographs[0].change.flag, true);
}

TEST_F(MarksTest, WhatWasExportedComesBackWholeInAnotherCatalogue) {
    const QString umlaut = QString::fromUtf8("ümläut \"1\".jpg");
    addPhotograph(u"a.jpg"_s, 6);
    addPhotograph(umlaut);
    const QByteArray lines =
        "{\"path\":\"/pictures/trip/a.jpg\",\"rotation\":360,\"stars\":5,\"tags\":[\"x\"]}\n"
        "{\"flag\":true,\"path\":\"/pictures/trip/" +
        umlaut.toUtf8().replace('"', "\\\"") +
        "\",\"rotation\":180}\n"
        "{\"path\":\"/pictures/trip/unknown.jpg\",\"stars\":1}\n"
        "{\"pathBytes\":\"L3gv/w==\",\"stars\":2}\n";
    const auto import = [&](const QByteArray& text) {
        const auto plan = fileactions::planImport(text, [&](const QByteArray& path) {
            return fileactions::fileIdOfPath(*both, roots, path);
        });
        EXPECT_EQ(plan.told.size(), 2) << plan.told.join(u'\n').toStdString();
        const auto stored = fileactions::storeEdit(*both, roots, plan.edit);
        return std::get<fileactions::PerformedEdit>(stored);
    };
    const QString untouched = inCatalogue().join(u' ');
    const auto performed = import(lines);
    EXPECT_EQ(
        rows(u"select EditCount from Ledger"_s) + rows(u"pragma main.application_id"_s),
        support::words("2 2"))
        << "an older copy of either file is known by it";
    const auto sorted = [](const QByteArray& text) {
        return support::sorted(QString::fromUtf8(text).split(u'\n'));
    };
    EXPECT_EQ(sorted(fileactions::exportMarks(*both, roots).value()), sorted(lines));
    EXPECT_TRUE(import(lines).fileIds.empty()) << "nothing is left to do";
    const auto back = fileactions::storeEdit(*both, roots, performed.inverse);
    EXPECT_EQ(std::get<fileactions::PerformedEdit>(back).fileIds.size(), 2U);
    EXPECT_EQ(fileactions::exportMarks(*both, roots).value(), QByteArray());
    EXPECT_EQ(inCatalogue().join(u' '), untouched);
}
