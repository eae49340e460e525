#include "ui/PBThemes.h"

#include "platform/tasks/MainThread.h"
#include "ui/ProgramStyle.h"

#include <QApplication>
#include <QStyle>

#include <memory>

namespace {

PBThemes::Scheme currentScheme = PBThemes::Scheme::Light;

const PBThemes::Colors& colorsOf(PBThemes::Scheme scheme) {
    static const PBThemes::Colors light{
        .sidebar = QColor(0xf0f1f3),
        .browser = QColor(0xffffff),
        .bar = QColor(0xe9eaed),
        .separator = QColor(0xd0d2d6),
        .text = QColor(0x1f2328),
        .secondaryText = QColor(0x535b65),
        .icon = QColor(0x59616b),
        .accent = QColor(0x2f6fde),
        .flag = QColor(0xd2491f),
        .star = QColor(0xd18b00),
        .sheet = QColor(0xe6e7ea),
        .groupHead = QColor(0xf4f5f7),
        .shadow = QColor(0, 0, 0, 110),
        .placeholder = QColor(0xffffff),
        .dimSelection = QColor(0x9aa3ae)};
    static const PBThemes::Colors dark{
        .sidebar = QColor(0x26282b),
        .browser = QColor(0x1d1e20),
        .bar = QColor(0x2d2f33),
        .separator = QColor(0x141517),
        .text = QColor(0xe6e8ea),
        .secondaryText = QColor(0xa3aab2),
        .icon = QColor(0xb3b9c0),
        .accent = QColor(0x5b93f5),
        .flag = QColor(0xf5784e),
        .star = QColor(0xf2b632),
        .sheet = QColor(0x232427),
        .groupHead = QColor(0x2f3136),
        .shadow = QColor(0, 0, 0, 190),
        .placeholder = QColor(0x6a6f76),
        .dimSelection = QColor(0x70767e)};
    return scheme == PBThemes::Scheme::Dark ? dark : light;
}

} // namespace

PBThemes::Scheme PBThemes::scheme() {
    platform::assertMainThread();
    return currentScheme;
}

const PBThemes::Colors& PBThemes::colors() {
    platform::assertMainThread();
    return colorsOf(currentScheme);
}

void PBThemes::apply(Scheme scheme) {
    platform::assertMainThread();
    currentScheme = scheme;
    // One style on every desktop, so that the window looks as it was drawn.
    if (!qobject_cast<ProgramStyle*>(QApplication::style())) {
        QApplication::setStyle(std::make_unique<ProgramStyle>().release()); // Qt owns it
    }
    QApplication::setPalette(palette(scheme));
}

QPalette PBThemes::palette(Scheme scheme) {
    const Colors& colors = colorsOf(scheme);
    const bool isDark = scheme == Scheme::Dark;
    QPalette palette;
    palette.setColor(QPalette::Window, colors.bar);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.browser);
    palette.setColor(QPalette::AlternateBase, colors.sidebar);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.secondaryText);
    palette.setColor(QPalette::Button, isDark ? QColor(0x3a3d42) : QColor(0xf7f8f9));
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, colors.accent);
    palette.setColor(QPalette::ToolTipBase, isDark ? QColor(0x3a3d42) : QColor(0xfdfdf5));
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::Light, isDark ? QColor(0x4a4e54) : QColor(0xffffff));
    palette.setColor(QPalette::Midlight, isDark ? QColor(0x3f4247) : QColor(0xf0f1f3));
    palette.setColor(QPalette::Mid, isDark ? QColor(0x232528) : QColor(0xc3c6cb));
    palette.setColor(QPalette::Dark, isDark ? QColor(0x18191b) : QColor(0xa9adb3));
    palette.setColor(QPalette::Shadow, isDark ? QColor(0x0b0b0c) : QColor(0x70757c));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, isDark ? QColor(0x6c7178) : QColor(0xa4a9b0));
    }
    palette.setColor(
        QPalette::Disabled, QPalette::Highlight, isDark ? QColor(0x44484e) : QColor(0xcfd2d6));
    return palette;
}
