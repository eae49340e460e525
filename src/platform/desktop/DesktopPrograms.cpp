#include "platform/desktop/DesktopPrograms.h"

#include <QFile>
#include <QGuiApplication>
#include <QMimeDatabase>

#include <gio/gdesktopappinfo.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace platform::DesktopPrograms {

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using AppInfo = std::unique_ptr<GAppInfo, Unref>;

GDesktopAppInfo* desktopFile(GAppInfo* info) {
    return G_IS_DESKTOP_APP_INFO(info) ? G_DESKTOP_APP_INFO(info) : nullptr;
}

/// Of a list that is ours with all that is in it. Its library alone goes through it: the checker of
/// threads doesn't see how it hands the memory of lists from one thread to another.
std::vector<AppInfo> taken(GList* list) {
    std::vector<AppInfo> infos;
    g_list_foreach(
        list,
        [](gpointer info, gpointer taken) {
            static_cast<std::vector<AppInfo>*>(taken)->emplace_back(static_cast<GAppInfo*>(info));
        },
        &infos);
    g_list_free(list);
    return infos;
}

/// Lists of other makers may name a type by one of its former names.
QStringList namesOf(const QString& mimeType) {
    QStringList names{mimeType};
    const QMimeType known = QMimeDatabase().mimeTypeForName(mimeType);
    if (!known.isValid()) return names;
    names << known.name() << known.aliases();
    names.removeDuplicates();
    return names;
}

/// The preferred one first.
std::vector<AppInfo> infosFor(const QString& mimeType) {
    std::vector<AppInfo> infos;
    const auto add = [&infos](AppInfo info) {
        const bool isKnown = std::ranges::any_of(infos, [&info](const AppInfo& known) {
            return g_app_info_equal(known.get(), info.get()) != 0;
        });
        if (!isKnown) infos.push_back(std::move(info));
    };
    const QStringList names = namesOf(mimeType);
    for (const QString& name : names) {
        if (GAppInfo* preferred = g_app_info_get_default_for_type(name.toUtf8().constData(), 0))
            add(AppInfo(preferred));
    }
    for (const QString& name : names) {
        for (AppInfo& info : taken(g_app_info_get_all_for_type(name.toUtf8().constData())))
            add(std::move(info));
    }
    return infos;
}

std::optional<Program> programOf(GAppInfo* info) {
    GDesktopAppInfo* file = desktopFile(info);
    if (!file || !g_app_info_should_show(info)) return std::nullopt;
    Program program{
        .id = QString::fromUtf8(g_app_info_get_id(info)),
        .name = QString::fromUtf8(g_app_info_get_name(info)),
        .icon = {}};
    const QString own = QGuiApplication::desktopFileName() + QStringLiteral(".desktop");
    if (program.id == own) return std::nullopt;
    if (g_desktop_app_info_get_boolean(file, "Terminal") != 0) return std::nullopt;
    if (char* icon = g_desktop_app_info_get_string(file, "Icon")) {
        program.icon = QString::fromUtf8(icon);
        g_free(icon);
    }
    return program;
}

} // namespace

std::vector<Program> programsFor(const QStringList& mimeTypes) {
    std::vector<Program> programs;
    for (const QString& type : mimeTypes) {
        std::vector<Program> forType;
        for (const AppInfo& info : infosFor(type))
            if (auto program = programOf(info.get())) forType.push_back(std::move(*program));
        if (type == mimeTypes.constFirst()) {
            programs = std::move(forType);
        } else {
            std::erase_if(programs, [&forType](const Program& program) {
                return std::ranges::find(forType, program) == forType.end();
            });
        }
    }
    return programs;
}

bool open(const Program& program, const QStringList& paths) {
    GDesktopAppInfo* file = g_desktop_app_info_new(program.id.toUtf8().constData());
    if (!file) return false;
    const AppInfo info(G_APP_INFO(file));
    GList* files = nullptr;
    for (const QString& path : paths)
        files = g_list_prepend(files, g_file_new_for_path(QFile::encodeName(path).constData()));
    files = g_list_reverse(files);
    const bool isStarted = g_app_info_launch(info.get(), files, nullptr, nullptr) != 0;
    g_list_free_full(files, g_object_unref);
    return isStarted;
}

bool hasProgramForScheme(QStringView scheme) {
    return AppInfo(g_app_info_get_default_for_uri_scheme(scheme.toUtf8().constData())) != nullptr;
}

} // namespace platform::DesktopPrograms
