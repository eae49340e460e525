#include "group/GroupTypes.h"

#include "group/CalendarMonth.h"
#include "group/CatalogueFixture.h"
#include "group/GroupChainMenu.h"
#include "group/GroupPresets.h"
#include "group/ValueTexts.h"
#include "platform/program/UserDefaults.h"

using namespace group;

namespace {

struct GroupTypesTest : support::CatalogueFixture {};

TEST_F(GroupTypesTest, eachTypeHasANameOfItsOwnAndAnIcon) {
    std::set<QString> names;
    std::set<int> descending;
    for (int type = 0; type < groupTypeCount; ++type) {
        const QString name = descriptionWithGroupType(type);
        EXPECT_EQ(name.isEmpty(), type == AllImages) << type;
        names.insert(name);
        // A name with an underscore is a key without a text.
        EXPECT_FALSE(name.contains(u'_')) << name.toStdString();
        if (!isAscendingWithGroupType(type)) descending.insert(type);
    }
    EXPECT_EQ(std::ssize(names), groupTypeCount);
    EXPECT_EQ(descending, (std::set<int>{1, 2, 3, 4, Flag, StarRating}));
    for (const int type : {-1, 64, std::numeric_limits<int>::min()}) {
        EXPECT_TRUE(isAscendingWithGroupType(type));
        EXPECT_TRUE(dbKeyWithGroupType(type).isEmpty() && descriptionWithGroupType(type).isEmpty());
        EXPECT_EQ(imageWithGroupType(type), IconName{});
        EXPECT_EQ(sourceOfGroupType(type), GroupSource::None);
    }
}

TEST_F(GroupTypesTest, valuesOfMetadataComeFromTheColumnOfTheirTable) {
    using enum GroupSource;
    const std::map<GroupSource, QString> tables{
        {Exif, u"Exif"_s}, {ExifAux, u"ExifAux"_s}, {Tiff, u"Tiff"_s}, {IPTC, u"IPTC"_s}};
    const QString insertion = u"insert into %1 (FileId,%2) values (?,'2019:07:14 10:00:00')"_s;
    int found = 0;
    for (int type = 0; type < groupTypeCount; ++type) {
        const auto table = tables.find(sourceOfGroupType(type));
        if (table == tables.end()) continue;
        const auto item = addImage();
        const QString sql = insertion.arg(table->second, dbKeyWithGroupType(type));
        EXPECT_TRUE(database.executeUpdate(sql, item->fileId())) << type;
        PBArray data{PBNull{}};
        GroupDataLoader loader(std::array{type}, 1);
        static_cast<void>(loader.loadGroupAndSortData(*item, data, database));
        const bool isDate = type == CaptureYear || type == CaptureMonth;
        EXPECT_EQ(data[0].toText().left(10), isDate ? u"2019-07-14"_s : u"2019:07:14"_s) << type;
        ++found;
    }
    EXPECT_EQ(found, 50) << "two dates, and all from 15 to 63 but the distance of subjects";
}

TEST_F(GroupTypesTest, bucketsIncludeTheirUpperBounds) {
    int bucket = 0;
    for (const QString& label : support::words("10K 50K 100K 200K 500K 1M 5M 10M 20M 50M 100M")) {
        const qint64 bound = label.chopped(1).toLongLong() << (label.endsWith(u'K') ? 10 : 20);
        EXPECT_EQ(sizeBucket(bound), bucket) << bound;
        EXPECT_EQ(sizeBucket(bound + 1), ++bucket) << bound;
        EXPECT_TRUE(sizeBucketLabel(bucket - 1).endsWith(u"~ "_s + label)) << bound;
    }
    EXPECT_EQ(sizeBucket(std::numeric_limits<qint64>::max()), 11);
    EXPECT_EQ(sizeBucket(-5), 0);
    EXPECT_EQ(sizeBucketLabel(11), u"> 100M"_s);
    EXPECT_TRUE(sizeBucketLabel(12).isEmpty() && sizeBucketLabel(-1).isEmpty());
}

TEST_F(GroupTypesTest, monthsBeginAtLocalMidnightAndAnyNumberHasOne) {
    const support::TimeZone zone("IST-5:30");
    const double midnight = 1617215400; // of 1 April 2021
    const std::pair<double, CalendarMonth> cases[] = {
        {midnight - 0.25, {2021, 3}}, {midnight, {2021, 4}},     {-19800 - 0.25, {1969, 12}},
        {-19800, {1970, 1}},          {std::nan(""), {1970, 1}}, {1e300, {9892, 3}}};
    for (const auto& [seconds, month] : cases)
        EXPECT_EQ(calendarMonthOf(PBDate{seconds}), month) << seconds;
    EXPECT_EQ(calendarMonthOf(PBDate{-1e300}), calendarMonthOf(PBDate{-2.5e11}));
}

QString textOf(QStringView key, const PBValue& value) {
    const auto tagWithTagId = [](qint64 id) {
        return id == 3 ? u"sea"_s : id == 17 ? u"Anna, Ben"_s : QString();
    };
    return group::stringWithDbKey(key, value, tagWithTagId);
}

TEST(ValueTextsTest, valuesAreShownAsPhotographersWriteThemAndOddOnesAsTheyAre) {
    // Keys, and their values with what they show.
    const std::pair<QStringView, const char*> numbers[] = {
        {u"FNumber", "2.8=F/2.8; 2.79999995=F/2.8; 11=F/11"},
        {u"ExposureTime", "0.004=1/250 s; 0.000125=1/8000 s; 0.8=0.8 s; 0.77=0.77 s; 0.98=0.98 s; "
                          "0.6=0.6 s; 0.5=1/2 s; 0.3=0.3 s; 0.25=1/4 s; 0.03=1/33.3 s; "
                          "0.030303=1/33 s; 0.00801=1/125 s; 1=1 s; 2.5=2.5 s; "
                          "59.999=60 s; 90=1.5 m; 0=0 s; -2=-2 s; inf=inf s"},
        {u"ExposureBiasValue", "0=±0EV; 0.33=+0.33EV; -0.67=-0.67EV; -0.001=±0EV; nan=±nanEV"},
        {u"FocalLength", "50=50 mm; 4.247=4.25 mm; nan=nan mm; -inf=-inf mm; 1e300=1e+300 mm"},
        {u"FocalLenIn35mmFilm", "26=26 mm"},
        {u"ShutterSpeedValue", "7.965784=7.97"},
        {u"SubjectDistance", "1.499=1.5 m"},
        {u"Altitude", "12.3456=12.35 m"},
        {u"MeteringMode", "255=Other; 1e300=1e+300"},
        {u"Flash", "0=Flash did not fire; 3=3; 95=Flash fired, auto mode, return light detected, "
                   "red-eye reduction mode"},
        {u"SceneType", "1=Directly photographed image; 2="},
        {u"FileSource", "3=Digital still camera; 0="}};
    const std::pair<QStringView, const char*> texts[] = {
        {u"FNumber", "f eight=f eight"},
        {u"Flash", "on=on"},
        {u"ISOSpeedRatings", "400=ISO-400"},
        {u"ExifVersion", "2,3,1=2.3.1"},
        {u"LensInfo", "24.0,70,2.799999,2.8=24,70,2.8,2.8; 35,?=35,?"},
        {u"Model", "  M 10-R =  M 10-R "},
        {u"AltitudeRef", "1=Below sea level; rubbish=Above sea level"},
        {u"SpeedRef", "k=km/h"},
        {u"ImgDirectionRef", "m=Magnetic north"},
        {u"TrackRef", "X=X"},
        {u"Tag", "3=sea; 3,17=sea,Anna, Ben; 17,4,3=Anna, Ben,sea; 4=; =; "
                 ",x, 3 ,99999999999999999999=sea"}};
    const auto check = [](QStringView key, const char* cases, const auto& valueOf) {
        for (const QString& one : QString::fromUtf8(cases).split(u"; "_s))
            EXPECT_EQ(textOf(key, valueOf(one.section(u'=', 0, 0))), one.section(u'=', 1))
                << qPrintable(one);
    };
    for (const auto& [key, cases] : numbers)
        check(key, cases, [](const QString& value) { return PBValue(value.toDouble()); });
    for (const auto& [key, cases] : texts)
        check(key, cases, [](const QString& value) { return PBValue(value); });
    EXPECT_EQ(textOf(u"FNumber", QByteArray("\x01")), u"\x01"_s);
    EXPECT_EQ(
        textOf(u"FNumber", PBNull{}) + textOf(u"Flash", {}) + textOf(u"Tag", PBNull{}), u""_s);
    EXPECT_EQ(textOf(u"Tag", 3), u"sea"_s);
    EXPECT_EQ(group::stringWithDbKey(u"Tag", u"3"_s, nullptr), QString());
}

using Action = PBGroupMenuAction;

/// What the entries add (+), remove (-), replace (=) and swap (x), "|" for separators.
QString told(const std::vector<ChainMenuEntry>& menu) {
    QStringList texts;
    for (const auto& entry : menu) {
        if (entry.isSeparator()) texts.append(u"|"_s);
        if (entry.isSubmenu) texts.append(u'(' + told(entry.entries) + u')');
        if (!entry.action) continue;
        const auto* pair = std::get_if<1>(&entry.action->value);
        texts.append(
            QChar(u"+-=x"[entry.action->type]) +
            (pair ? u"%1,%2"_s.arg((*pair)[0]).arg((*pair)[1])
                  : QString::number(std::get<int>(entry.action->value))));
    }
    return texts.join(u' ');
}

TEST(GroupChainMenuTest, cellsOfferWhatIsNotInTheChainAndWhatCanBeDoneToTheirLink) {
    EXPECT_EQ(
        told(groupMenuOfChain(GroupChain{3, 5}, 2)),
        u"+1 +2 +6 +7 +8 +9 +14 +11 +12 +13 | (+15 +16 +18 +4 +20 +21 +22 +23 +24 +25 +26 +27 +29 "
        "+30 +31 +32 +33 +34) (+35 +36 +37 +38 +39 +40 +41 +42 +43 +44 +45 +46 +47 +48 +49 +50 +51 "
        "+52 +53 +54 +55 +56 +57 +58 +59 +60 +61 +62 +63)");
    EXPECT_TRUE(cellsOfChain(GroupChain{3, 5}).back().title.isEmpty());
    EXPECT_EQ(cellsOfChain(GroupChain{3, 5, 16}).size(), 3U) << "no cell to add one";

    const auto menu = groupMenuOfChain(GroupChain{16, 3, 40}, 1);
    EXPECT_TRUE(told(menu).endsWith(u"=1,63) | x1,0 x1,2 | -1"));
    EXPECT_EQ(menu[menu.size() - 4].title, u"Camera Model <--> Captured: Year"_s);
    // A single link has nothing to change places with.
    EXPECT_TRUE(told(groupMenuOfChain(GroupChain{3}, 0)).endsWith(u"=0,63) | -0"));
}

TEST(GroupChainMenuTest, actionsChangeTheChain) {
    using Result = std::variant<GroupChain, ChainRefusal>;
    const Result needsGeocoder = ChainRefusal::NeedsGeocoder;
    const Result stale = ChainRefusal::Stale;
    const std::tuple<Action, bool, Result> cases[] = {
        {{Action::Add, 14}, true, GroupChain{3, 5, 14}},
        {{Action::Add, 14}, false, needsGeocoder},
        {{Action::Replace, std::array{0, 14}}, false, needsGeocoder},
        {{Action::Replace, std::array{0, 16}}, false, GroupChain{16, 5}},
        {{Action::Swap, std::array{0, 1}}, true, GroupChain{5, 3}},
        {{Action::Remove, 0}, true, GroupChain{5}},
        {{Action::Remove, 2}, true, stale},
        {{Action::Remove, -1}, true, stale},
        {{Action::Replace, std::array{2, 16}}, true, stale},
        {{Action::Swap, std::array{0, 2}}, true, stale},
        {{Action::Swap, std::array{2, 0}}, true, stale},
        {{Action::Swap, 1}, true, stale}};
    for (const auto& [action, canUseGeocoder, result] : cases)
        EXPECT_EQ(chainAfterAction({3, 5}, action, canUseGeocoder), result);
}

TEST(GroupPresetsTest, chainsAreSeededSavedAndRemovedOnceAsTheMenuOffers) {
    const QTemporaryDir folder;
    platform::UserDefaults settings(folder.filePath(u"s.conf"_s));
    GroupPresets presets(settings);
    EXPECT_FALSE(presets.menu()[0].entries.at(0).action) << "nothing to select";
    presets.seedIfAbsent(false);
    EXPECT_EQ(
        presets.chains(),
        (std::vector<GroupChain>{{3, 5}, {3, 16}, {3, 18}, {3, 21}, {3, 26}, {16, 18}}));
    platform::UserDefaults others(folder.filePath(u"t.conf"_s));
    GroupPresets withPlaces(others);
    withPlaces.seedIfAbsent(true);
    EXPECT_EQ(withPlaces.chains().at(1), (GroupChain{3, 14}));
    presets.removeAll();
    presets.seedIfAbsent(true);
    EXPECT_TRUE(presets.chains().empty()) << "an emptied list is not a missing one";

    EXPECT_TRUE(presets.save({3, 5}) && presets.save({}) && presets.save({16}));
    EXPECT_FALSE(presets.save({3, 5}));
    EXPECT_TRUE(presets.remove({}));
    EXPECT_FALSE(presets.remove({}));
    EXPECT_EQ(presets.chains(), (std::vector<GroupChain>{{3, 5}, {16}}));
    const auto menu = presets.menu();
    ASSERT_EQ(menu.size(), 7U);
    EXPECT_TRUE(menu[1].isSeparator() && menu[4].isSeparator());
    using Type = GroupPresets::Action::Type;
    const std::pair<const GroupPresets::Entry*, GroupPresets::Action> entries[] = {
        {&menu[3].entries.at(0), {Type::Remove, {3, 5}}},
        {&menu[5], {Type::CopyTo, {}}},
        {&menu[6], {Type::MoveTo, {}}}};
    for (const auto& [entry, action] : entries)
        EXPECT_EQ(entry->action, action) << entry->title.toStdString();
    EXPECT_EQ(menu[0].entries[0].title, u"Captured: Year > Folder"_s);
}

} // namespace
