#include "catalogue/marks/MarksMatching.h"

#include <QHash>

#include <algorithm>
#include <set>

namespace marks {

namespace {

using Pairs = std::vector<std::pair<std::size_t, std::size_t>>; // row and sighting

bool isSameDate(const Trace& one, const Trace& other) {
    return one.size == other.size && one.modificationDate == other.modificationDate;
}

class Matching {
public:
    explicit Matching(const MatchingQuestion& question)
        : _question(question), _isRowTaken(question.rows.size()),
          _isSightingTaken(question.sightings.size()), _hasTurnedUp(question.rows.size()) {
        for (std::size_t index = 0; index < question.sightings.size(); ++index) {
            const Trace& trace = question.sightings[index].trace;
            _byPath.insert(trace.path(), index);
            _bySize.insert(trace.size, index);
            if (trace.identity.isKnown()) _byInode.insert(trace.identity.inode, index);
        }
        for (const LedgerRow& row : question.rows) {
            if (row.inheritedFrom != 0) _isSucceeded.insert(row.inheritedFrom);
            if (row.fileId != 0 && !row.trace.digest.isEmpty())
                _held.insert(row.trace.digest, &row);
        }
    }

    std::vector<Match> run() {
        take(samePlaces(), Trust::SamePlace);
        takeUnambiguous(sameIdentities(), Trust::SameIdentity);
        if (!_question.isAllSeen) return std::move(_matches);
        takeUnambiguous(sameContents(), Trust::SameContent);
        if (_question.isEndOfScan) take(samePaths(), Trust::SamePathOnly);
        return std::move(_matches);
    }

private:
    const LedgerRow& row(std::size_t index) const { return _question.rows[index]; }
    const Sighting& sighting(std::size_t index) const { return _question.sightings[index]; }

    /// The newest rows first: of two that were at one path, the later one was there last.
    template <typename Key>
    Pairs pairs(
        const QMultiHash<Key, std::size_t>& sightings, const auto& keyOf, const auto& isLookedFor,
        const auto& isPair) {
        Pairs found;
        for (std::size_t index = _question.rows.size(); index-- > 0;) {
            if (_isRowTaken[index]) continue;
            const auto [begin, end] = sightings.equal_range(keyOf(row(index).trace));
            if (begin == end || !isLookedFor(row(index))) continue;
            for (auto other = begin; other != end; ++other) {
                if (!_isSightingTaken[*other] && row(index).fileId != sighting(*other).fileId &&
                    isPair(row(index), sighting(*other)))
                    found.emplace_back(index, *other);
            }
        }
        return found;
    }

    Pairs samePlaces() {
        return pairs(
            _byPath, [](const Trace& trace) { return trace.path(); },
            [](const LedgerRow&) { return true; },
            [this](const LedgerRow& row, const Sighting& seen) {
                if (row.trace.size < 0) return true; // marked by its path
                if (isSameFile(row, seen)) return true;
                return row.trace.digest.isEmpty() ? isSameDate(row.trace, seen.trace)
                                                  : isSameContent(row, seen);
            });
    }

    Pairs sameIdentities() {
        return pairs(
            _byInode, [](const Trace& trace) { return trace.identity.inode; },
            [this](const LedgerRow& row) { return hasLeftItsPlace(row); },
            [](const LedgerRow& row, const Sighting& seen) { return isSameFile(row, seen); });
    }

    Pairs sameContents() {
        return pairs(
            _bySize, [](const Trace& trace) { return trace.size; },
            [this](const LedgerRow& row) {
                return row.trace.size >= 0 && hasLeftItsPlace(row) && !isHeldElsewhere(row);
            },
            [this](const LedgerRow& row, const Sighting& seen) {
                if (!row.trace.digest.isEmpty()) return isSameContent(row, seen);
                return isSameDate(row.trace, seen.trace) &&
                       row.trace.fileName() == seen.trace.fileName();
            });
    }

    Pairs samePaths() {
        return pairs(
            _byPath, [](const Trace& trace) { return trace.path(); },
            [this](const LedgerRow& row) {
                const auto index = static_cast<std::size_t>(&row - _question.rows.data());
                return !_hasTurnedUp[index] && !_isSucceeded.contains(row.id) &&
                       !isHeldElsewhere(row);
            },
            [](const LedgerRow& row, const Sighting& seen) {
                return !isAnotherPhotograph(row, seen);
            });
    }

    static bool isSameFile(const LedgerRow& row, const Sighting& seen) {
        return row.trace.identity.isKnown() && row.trace.identity == seen.trace.identity;
    }
    bool isSameContent(const LedgerRow& row, const Sighting& seen) const {
        return _question.digest && row.trace.size == seen.trace.size &&
               row.trace.digest == _question.digest(seen);
    }
    bool hasLeftItsPlace(const LedgerRow& row) {
        const auto known = _places.constFind(row.id);
        const Place place =
            known != _places.constEnd() ? *known : *_places.insert(row.id, _question.place(row));
        return place == Place::Gone || place == Place::HoldsOther;
    }
    /// Another photograph of the ledger, which is where it is, has the same content: what turns up
    /// is a copy of that one.
    bool isHeldElsewhere(const LedgerRow& row) {
        const auto [begin, end] = _held.equal_range(row.trace.digest);
        return std::any_of(begin, end, [&](const LedgerRow* other) {
            return other->id != row.id && !row.trace.digest.isEmpty() && !hasLeftItsPlace(*other);
        });
    }
    static bool isAnotherPhotograph(const LedgerRow& row, const Sighting& seen) {
        const auto differs = [](const QString& one, const QString& other) {
            return !one.isEmpty() && !other.isEmpty() && one != other;
        };
        return differs(row.trace.camera, seen.trace.camera) ||
               (seen.isOnRemovableVolume &&
                differs(row.trace.timeOfCapture, seen.trace.timeOfCapture));
    }

    void take(const Pairs& pairs, Trust trust) {
        for (const auto& [row, sighting] : pairs) {
            if (_isRowTaken[row] || _isSightingTaken[sighting]) continue;
            _isRowTaken[row] = _isSightingTaken[sighting] = true;
            _matches.push_back({row, sighting, trust});
        }
    }

    /// Takes the pairs of which neither half is in another one; first among those that agree in
    /// more than the photograph.
    void takeUnambiguous(const Pairs& all, Trust trust) {
        for (const auto& [row, sighting] : all)
            _hasTurnedUp[row] = true;
        takeUnique(all, trust, [this](std::size_t row, std::size_t seen) {
            return this->row(row).trace.relativePath == sighting(seen).trace.relativePath;
        });
        takeUnique(all, trust, [this](std::size_t row, std::size_t seen) {
            return this->row(row).trace.fileName() == sighting(seen).trace.fileName();
        });
        takeUnique(all, trust, [](std::size_t, std::size_t) { return true; });
    }
    void takeUnique(const Pairs& all, Trust trust, const auto& agrees) {
        Pairs open;
        QHash<std::size_t, int> rows;
        QHash<std::size_t, int> sightings;
        for (const auto& [row, sighting] : all) {
            if (_isRowTaken[row] || _isSightingTaken[sighting] || !agrees(row, sighting)) continue;
            open.emplace_back(row, sighting);
            ++rows[row];
            ++sightings[sighting];
        }
        std::erase_if(open, [&](const auto& pair) {
            return rows[pair.first] > 1 || sightings[pair.second] > 1;
        });
        take(open, trust);
    }

    const MatchingQuestion& _question;
    QMultiHash<QByteArray, std::size_t> _byPath;
    QMultiHash<quint64, std::size_t> _byInode;
    QMultiHash<qint64, std::size_t> _bySize;
    QMultiHash<QByteArray, const LedgerRow*> _held;
    std::set<qint64> _isSucceeded;
    QHash<qint64, Place> _places;
    std::vector<bool> _isRowTaken;
    std::vector<bool> _isSightingTaken;
    std::vector<bool> _hasTurnedUp;
    std::vector<Match> _matches;
};

} // namespace

std::vector<Match> matchPhotographs(const MatchingQuestion& question) {
    if (question.rows.empty() || question.sightings.empty()) return {};
    return Matching(question).run();
}

bool keepsRotation(const Trace& before, const Trace& now) {
    const bool haveSidesChanged = (before.width > before.height && now.width < now.height) ||
                                  (before.width < before.height && now.width > now.height);
    return before.orientation == now.orientation && !haveSidesChanged;
}

} // namespace marks
