#include "fileactions/FileErrorText.h"

#include "platform/program/LocalizedTexts.h"

#include <cerrno>

namespace fileactions {

namespace {

struct ErrorText {
    std::error_condition error;
    QStringView key;
};

} // namespace

QString fileErrorText(const std::error_code& error) {
    static const ErrorText texts[] = {
        {std::errc::no_space_on_device, u"FileErrorDiskFull"},
        {{EDQUOT, std::generic_category()}, u"FileErrorDiskFull"},
        {std::errc::permission_denied, u"FileErrorNotAllowed"},
        {std::errc::operation_not_permitted, u"FileErrorNotAllowed"},
        {std::errc::read_only_file_system, u"FileErrorReadOnly"},
        {std::errc::filename_too_long, u"FileErrorNameTooLong"},
        {std::errc::invalid_argument, u"FileErrorBadName"},
        {std::errc::illegal_byte_sequence, u"FileErrorBadName"},
        {std::errc::no_such_file_or_directory, u"FileErrorGone"},
        {std::errc::not_a_directory, u"FileErrorGone"},
        {std::errc::is_a_directory, u"FileErrorIsFolder"},
        {std::errc::file_exists, u"FileErrorExists"},
        {std::errc::file_too_large, u"FileErrorTooLarge"},
        {std::errc::text_file_busy, u"FileErrorBusy"},
        {std::errc::io_error, u"FileErrorDisk"},
        {std::errc::argument_out_of_domain, u"FileErrorOwnPlace"}, // `ownPlace`
        {std::errc::too_many_symbolic_link_levels, u"FileErrorOwnLink"},
        {std::errc::bad_message, u"FileErrorUnreadable"},
        {std::errc::not_supported, u"FileErrorCantEncode"},
        {std::errc::resource_unavailable_try_again, u"FileErrorNotNow"},
    };
    for (const ErrorText& text : texts)
        if (error == text.error) return platform::localizedString(text.key);
    return platform::localizedFormat(
        u"FileErrorOther", {QString::fromLocal8Bit(error.message().c_str())});
}

} // namespace fileactions
