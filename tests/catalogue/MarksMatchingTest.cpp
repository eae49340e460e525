#include "catalogue/marks/MarksMatching.h"

#include "support/Support.h"

using marks::LedgerRow;
using marks::Place;
using marks::Sighting;

namespace {

/// What a case says in a few letters: "path=content@inode#camera,time". Content names both size and
/// digest.
marks::Trace trace(const QString& text) {
    marks::Trace made;
    made.rootPath = "/root";
    made.relativePath = text.section(u'@', 0, 0).section(u'=', 0, 0).toLatin1();
    made.digest = text.section(u'@', 0, 0).section(u'=', 1).toLatin1();
    made.size = made.digest.isEmpty() ? 7 : made.digest[0];
    made.camera = text.section(u'#', 1).section(u',', 0, 0);
    made.timeOfCapture = text.section(u',', 1);
    const quint64 inode = text.section(u'@', 1).section(u'#', 0, 0).toULongLong();
    if (inode != 0) made.identity = {inode, 99};
    return made;
}

struct Case {
    const char* what;
    const char* rows;      ///< of the ledger; "!" in front: its place holds it
    const char* sightings; ///< in the catalogue, without marks; "!": on a removable volume
    const char* expected;  ///< "row>sighting:trust", by their numbers
};

std::string matched(const Case& each, bool isEndOfScan = true) {
    std::vector<LedgerRow> rows;
    std::vector<Sighting> sightings;
    for (const QString& text : support::words(each.rows)) {
        LedgerRow& row = rows.emplace_back();
        row.id = std::ssize(rows);
        row.fileId = text[0] == u'!' ? 100 + row.id : 0;
        row.trace = trace(QString(text).remove(u'!'));
    }
    for (const QString& text : support::words(each.sightings))
        sightings.push_back(
            {std::ssize(sightings) + 1, trace(QString(text).remove(u'!')), text[0] == u'!'});
    const auto matches = marks::matchPhotographs(
        {.rows = rows,
         .sightings = sightings,
         .place = [](const LedgerRow& row) { return row.fileId ? Place::HoldsIt : Place::Gone; },
         .digest = [](const Sighting& seen) { return seen.trace.digest; },
         .isEndOfScan = isEndOfScan});
    const QStringList found = support::listed(matches, [](const auto& match) {
        return u"%1>%2:%3"_s.arg(match.row + 1).arg(match.sighting + 1).arg(int(match.trust));
    });
    return support::sorted(found).join(u' ').toStdString();
}

} // namespace

TEST(MarksMatchingTest, eachPhotographIsKnownAgainByTheMostTrustedTrace) {
    for (const Case& each : std::vector<Case>{
             {"same path and identity, rewritten in place", "a=x@1", "a=y@1", "1>1:1"},
             {"same path and content", "a=x@1", "a=x@2", "1>1:1"},
             {"renamed and rewritten", "a=x@1", "b=y@1", "1>1:2"},
             {"moved across disks", "a=x@1", "b/c=x@2", "1>1:3"},
             {"a hard link", "!a=x@1", "b=x@1", ""},
             {"a copy in place, the original moved", "a=x@1", "a=x@2 b=x@1", "1>1:1"},
             {"two copies, original gone", "a=x@1", "b=x@2 c=x@3", ""},
             {"two copies, one has the name", "d/a=x@1", "e/a=x@2 c=x@3", "1>1:3"},
             {"two of one content come to one", "a=x@1 b=x@2", "c=x@3", ""},
             {"two of one content, by name", "d/a=x@1 d/b=x@2", "e/b=x@3 e/a=x@4", "1>2:3 2>1:3"},
             {"ambiguous content has turned up", "a=x@1", "a=y@4 b=x@2 c=x@3", ""},
             {"a copy of one that is there, not the lost twin", "a=x@1 !b=x@2", "c=x@3", ""},
             {"the lost twin put back", "a=x@1 !b=x@2", "a=x@3", "1>1:1"},
             {"no digest taken: nothing by size alone", "a@1", "b@2", ""},
             {"no digest taken: name, size and date", "d/a@1", "e/a@2", "1>1:3"},
             {"dropped metadata", "a=x@1#One,12:00", "!a=y@2", "1>1:4"},
             {"another time", "a=x@1#One,12:00", "a=y@2#One,12:01", "1>1:4"},
             {"another time on a card", "a=x@1#One,12:00", "!a=y@2#One,12:01", ""},
             {"two were at one path: the later one", "a=x@1 a=y@2", "a=z@3", "2>1:4"}}) {
        EXPECT_EQ(matched(each), each.expected) << each.what;
    }
    EXPECT_EQ(matched({"", "a=x@1", "a=y@2", ""}, false), "") << "only when all was seen";
}
