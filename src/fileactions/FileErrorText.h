#pragma once

#include <QString>

#include <system_error>

namespace fileactions {

/// Why something could not be done with a file, in a sentence for the user.
[[nodiscard]] QString fileErrorText(const std::error_code& error);

} // namespace fileactions
