#include "library/RootRecognition.h"

#include "library/LibrarySupport.h"

namespace {

struct RootRecognitionTest : LibraryTest {
    /// A root with so many images in each of its folders, "0", "1" and so on.
    qint64 catalogue(const std::vector<int>& counts) {
        const qint64 rootId = addRoot(u"/r%1"_s.arg(++_roots))->aliasId();
        for (std::size_t folder = 0; folder < counts.size(); ++folder) {
            const qint64 folderId =
                LibraryTest::catalogue.insertFolderWithAliasId(rootId, QString::number(folder));
            for (int i = 0; i < counts[folder]; ++i)
                LibraryTest::catalogue.insertImageFileWithDictionary(
                    {{u"FolderId"_s, folderId},
                     {u"FileName"_s, u"%1.jpg"_s.arg(i)},
                     {u"FileSize"_s, 100 + i}});
        }
        return rootId;
    }
    std::vector<CataloguedName> namesOf(qint64 rootId, std::size_t most) {
        return cataloguedNames(db, rootId, most).value_or(std::vector<CataloguedName>());
    }

private:
    int _roots = 0;
};

TEST_F(RootRecognitionTest, namesComeFromAsManyFoldersAsPossible) {
    catalogue({7}); // of another root
    const auto folders = [](const std::vector<CataloguedName>& names) {
        std::map<QString, int> counts;
        for (const CataloguedName& name : names)
            ++counts[name.relativePath.section(u'/', 0, 0)];
        return counts;
    };
    const auto few = namesOf(catalogue({2, 0, 30, 30}), 20);
    EXPECT_EQ(folders(few), (std::map<QString, int>{{u"0"_s, 2}, {u"2"_s, 9}, {u"3"_s, 9}}));
    EXPECT_EQ(few.front().relativePath, u"0/0.jpg"_s);
    EXPECT_EQ(few[1].fileSize, 101);
    const auto many = folders(namesOf(catalogue(std::vector<int>(30, 3)), 10));
    EXPECT_EQ(many.size(), 10U);
    EXPECT_TRUE(many.contains(u"0"_s) && many.contains(u"12"_s) && many.contains(u"27"_s));
    EXPECT_TRUE(namesOf(catalogue({}), 10).empty());
    ASSERT_TRUE(db.executeUpdate(u"drop table ImageFile"_s));
    EXPECT_FALSE(cataloguedNames(db, 1)) << "not known is not none";
}

TEST_F(RootRecognitionTest, halfOfTheNamesWithTheirSizesMakeTheRoot) {
    const auto recognised = [&](const char* letters, int looks = 99) {
        static int folders = 0;
        const QString folder = make(QString::number(++folders));
        std::vector<CataloguedName> names;
        for (const char* letter = letters; *letter != 0; ++letter) {
            const QString name = u"%1.jpg"_s.arg(names.size());
            names.push_back({name, 3});
            const QString file = folder + u'/' + name;
            if (*letter == 's') support::writeFile(file, "abc");
            if (*letter == 'o') support::writeFile(file, "other size");
            if (*letter == 'u') QFile::link(file, file); // leads to itself: can't be looked at
            if (*letter == 'd') QDir().mkdir(file);
        }
        return recogniseFolder(folder, names, [&] { return looks-- == 0; });
    };
    using enum Recognition;
    const std::pair<const char*, Recognition> cases[] = {
        {"s-", Same},   {"s--", Undecided}, {"ooo", Other},
        {"dd", Other},  {"", Undecided},    {"suu", Undecided},
        {"s-uu", Same}, {"--uu", Other},    {"--uuu", Undecided}};
    for (const auto& [letters, recognition] : cases)
        EXPECT_EQ(recognised(letters), recognition) << letters;
    EXPECT_EQ(recognised("ssss", 1), Undecided) << "what there was no time for is not known";
    EXPECT_EQ(recognised("ssss", 2), Same);
}

} // namespace
