#pragma once

#include "shell/menus/MenuEntries.h"

#include <QStringView>

/// Why a rule does not hold: the key of a sentence for the user. By one table, a row for each
/// reason that a condition can have; empty where the table knows none.
[[nodiscard]] QStringView reasonOfRefusal(MenuCondition condition, const MenuState& state);
