#include "catalogue/marks/MarksMatching.h"

#include "support/Support.h"

using marks::LedgerRow;
using marks::Place;
using marks::Sighting;

namespace {

/// What a case says in a few letters: "path=content@inode". Content names both size and digest.
marks::Trace trace(const std::string& text) {
    const auto part = [&](char from, char to) {
        const auto begin = text.find(from);
        if (begin == std::string::npos) return std::string();
        const auto end = text.find(to, begin);
        return text.substr(begin + 1, end == std::string::npos ? end : end - begin - 1);
    };
    marks::Trace made;
    made.rootPath = "/root";
    made.relativePath = QByteArray::fromStdString(text.substr(0, text.find_first_of("=@")));
    made.digest = QByteArray::fromStdString(part('=', '@'));
    made.size = made.digest.isEmpty() ? 7 : made.digest[0];
    const std::string inode = part('@', ' ');
    if (!inode.empty()) made.identity = {std::stoull(inode), 99};
    return made;
}

struct Case {
    const char* what;
    std::vector<std::string> rows;      ///< of the ledger; "!" in front: its place holds it
    std::vector<std::string> sightings; ///< in the catalogue, without marks
    std::string expected;               ///< "row>sighting:trust", by their numbers
};

std::string matched(const Case& each, bool isEndOfScan = true) {
    std::vector<LedgerRow> rows;
    std::vector<Sighting> sightings;
    std::set<qint64> unmoved;
    for (const std::string& text : each.rows) {
        LedgerRow& row = rows.emplace_back();
        row.id = static_cast<qint64>(rows.size());
        const bool isUnmoved = text[0] == '!';
        if (isUnmoved) unmoved.insert(row.id);
        if (isUnmoved) row.fileId = 100 + row.id;
        row.trace = trace(text.substr(isUnmoved ? 1 : 0));
    }
    for (const std::string& text : each.sightings)
        sightings.push_back({static_cast<qint64>(sightings.size()) + 1, trace(text)});
    std::set<std::string> found;
    const auto matches = marks::matchPhotographs(
        {.rows = rows,
         .sightings = sightings,
         .place =
             [&](const LedgerRow& row) {
                 return unmoved.contains(row.id) ? Place::HoldsIt : Place::Gone;
             },
         .digest = [](const Sighting& seen) { return seen.trace.digest; },
         .isEndOfScan = isEndOfScan});
    for (const auto& match : matches)
        found.insert(
            std::to_string(match.row + 1) + ">" + std::to_string(match.sighting + 1) + ":" +
            std::to_string(static_cast<int>(match.trust)));
    std::string all;
    for (const std::string& text : found)
        all += (all.empty() ? "" : " ") + text;
    return all;
}

} // namespace

TEST(MarksMatchingTest, eachPhotographIsKnownAgainByTheMostTrustedTrace) {
    for (const Case& each : std::vector<Case>{
             {"same path and identity, rewritten in place", {"a=x@1"}, {"a=y@1"}, "1>1:1"},
             {"same path and content", {"a=x@1"}, {"a=x@2"}, "1>1:1"},
             {"renamed", {"a=x@1"}, {"b=x@1"}, "1>1:2"},
             {"renamed and rewritten", {"a=x@1"}, {"b=y@1"}, "1>1:2"},
             {"moved across disks", {"a=x@1"}, {"b/c=x@2"}, "1>1:3"},
             {"written anew", {"a=x@1"}, {"a=y@2"}, "1>1:4"},
             {"swapped names", {"a=x@1", "b=y@2"}, {"a=y@2", "b=x@1"}, "1>2:2 2>1:2"},
             {"another over the path of a moved one", {"a=x@1"}, {"a=y@3", "b=x@1"}, "1>2:2"},
             {"the same, moved across disks", {"a=x@1"}, {"a=y@3", "b=x@9"}, "1>2:3"},
             {"copied while the original is there", {"!a=x@1"}, {"b=x@2"}, ""},
             {"a hard link", {"!a=x@1"}, {"b=x@1"}, ""},
             {"a copy in place, the original moved", {"a=x@1"}, {"a=x@2", "b=x@1"}, "1>1:1"},
             {"two copies, original gone", {"a=x@1"}, {"b=x@2", "c=x@3"}, ""},
             {"two copies, one has the name", {"d/a=x@1"}, {"e/a=x@2", "c=x@3"}, "1>1:3"},
             {"two of one content come to one", {"a=x@1", "b=x@2"}, {"c=x@3"}, ""},
             {"two of one content, by name",
              {"d/a=x@1", "d/b=x@2"},
              {"e/b=x@3", "e/a=x@4"},
              "1>2:3 2>1:3"},
             {"ambiguous content has turned up", {"a=x@1"}, {"a=y@4", "b=x@2", "c=x@3"}, ""},
             {"a copy of one that is there, not the lost twin", {"a=x@1", "!b=x@2"}, {"c=x@3"}, ""},
             {"the lost twin put back", {"a=x@1", "!b=x@2"}, {"a=x@3"}, "1>1:1"},
             {"no digest taken: nothing by size alone", {"a@1"}, {"b@2"}, ""},
             {"no digest taken: name, size and date", {"d/a@1"}, {"e/a@2"}, "1>1:3"},
             {"strangers", {"a=x@1"}, {"b=y@2"}, ""},
             {"two were at one path: the later one", {"a=x@1", "a=y@2"}, {"a=z@3"}, "2>1:4"}}) {
        EXPECT_EQ(matched(each), each.expected) << each.what;
    }
    EXPECT_EQ(matched({"", {"a=x@1"}, {"a=y@2"}, ""}, false), "") << "only when all was seen";
}

TEST(MarksMatchingTest, anotherCameraOrOnACardAnotherTimeIsAnotherPhotograph) {
    LedgerRow row;
    row.trace = trace("a=x@1");
    row.trace.camera = u"One"_s;
    row.trace.timeOfCapture = u"12:00:00"_s;
    Sighting seen{1, trace("a=y@2")};
    const std::tuple<QString, QString, bool, std::size_t> cases[] = {
        {{}, {}, true, 1}, // a program that drops metadata says nothing
        {u"Two"_s, {}, false, 0},
        {u"One"_s, u"12:00:01"_s, false, 1},
        {u"One"_s, u"12:00:01"_s, true, 0}};
    for (const auto& [camera, timeOfCapture, isRemovable, matches] : cases) {
        seen.trace.camera = camera;
        seen.trace.timeOfCapture = timeOfCapture;
        seen.isOnRemovableVolume = isRemovable;
        const auto found = marks::matchPhotographs(
            {.rows = {&row, 1},
             .sightings = {&seen, 1},
             .place = [](const LedgerRow&) { return Place::HoldsOther; },
             .digest = [](const Sighting& one) { return one.trace.digest; },
             .isEndOfScan = true});
        EXPECT_EQ(found.size(), matches) << camera.toStdString();
    }
}
