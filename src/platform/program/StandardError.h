#pragma once

#include <QString>

namespace platform {

/// One line on standard error for the user, with the program's name in front. Any thread.
void complain(const QString& sentence);

} // namespace platform
