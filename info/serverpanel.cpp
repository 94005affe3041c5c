#include "info/serverpanel.h"

#include "base/documentlimits.h"

#include <algorithm>

namespace
{
constexpr int designHeight = 571;

// The size, or the largest of its proportions that is no wider.
QSize noWiderThan(int width, QSize size)
{
    return size.width() <= width ? size : QSize(width, size.height() * width / size.width());
}

QRect centredIn(const QRect &place, QSize size)
{
    return {place.x() + (place.width() - size.width()) / 2,
            place.y() + (place.height() - size.height()) / 2, size.width(), size.height()};
}

QString withClientButtonSize(const QString &sheet)
{
    return sheet.arg(ServerPanel::clientButtonSize.width())
        .arg(ServerPanel::clientButtonSize.height());
}
} // namespace

QStringList ServerPanel::orderedNames(QStringList names)
{
    names.sort(Qt::CaseSensitive);
    const QString last = QStringLiteral("Beta");
    if (names.removeOne(last)) {
        names.append(last);
    }
    return names;
}

QStringList ServerPanel::shownNames(const QStringList &names)
{
    return orderedNames(names).mid(0, DocumentLimits::servers);
}

QSize ServerPanel::logoSize(int columns)
{
    const int columnWidth = designWidth / (columns + 1);
    const int width = static_cast<int>(columnWidth * 0.9);
    constexpr float heightPerWidth = 0.46875F; // 150 / 320
    return {width, static_cast<int>(static_cast<float>(width) * heightPerWidth)};
}

bool ServerPanel::fitSideBySide(int columns)
{
    return columns <= mostSideBySide;
}

int ServerPanel::columnHeight(QSize logo)
{
    return clientButtonSize.height() * 2 + logo.height();
}

ServerPanel::ColumnPlace ServerPanel::columnPlace(int index, int columns, const QMargins &margins,
                                                  int spacing)
{
    const QRect row = QRect(0, 0, designWidth, designHeight).marginsRemoved(margins);
    const QSize logo = logoSize(columns);
    const auto cellLeft = [&row, columns, spacing](int cell) {
        return row.x() + cell * (row.width() + spacing) / columns;
    };
    const QRect cell(cellLeft(index), row.y(), cellLeft(index + 1) - spacing - cellLeft(index),
                     row.height());
    const int width = std::min(cell.width(), std::max(logo.width(), clientButtonSize.width()));

    const QSize button = noWiderThan(width, clientButtonSize);
    const QRect upper(0, logo.height(), width, clientButtonSize.height());
    return {centredIn(cell, {width, columnHeight(logo)}),
            {0, 0, width, logo.height()},
            centredIn(upper, button),
            centredIn(upper.translated(0, clientButtonSize.height()), button),
            noWiderThan(width, logo)};
}

ServerPanel::ColumnPlace ServerPanel::scaledTo(QSize panel, const ColumnPlace &place)
{
    // Both sides were cut to whole pixels; the larger ratio is the one that has lost less.
    const float ratio = std::max(static_cast<float>(panel.width()) / designWidth,
                                 static_cast<float>(panel.height()) / designHeight);
    const auto length = [ratio](int design) {
        return static_cast<int>(static_cast<float>(design) * ratio);
    };
    const auto size = [&length](QSize design) {
        return QSize(length(design.width()), length(design.height()));
    };
    const auto rect = [&length, &size](const QRect &design) {
        return QRect(QPoint(length(design.x()), length(design.y())), size(design.size()));
    };
    return {rect(place.column), rect(place.logo), rect(place.upper), rect(place.lower),
            size(place.picture)};
}

QString ServerPanel::logoFileName(const QString &server)
{
    return server + QStringLiteral(".png");
}

ServerPanel::ClientButtons ServerPanel::clientButtons(const QStringList &kinds)
{
    const bool hasOfficial = kinds.contains(QStringLiteral("Official"));
    const bool hasBeta = kinds.contains(QStringLiteral("Beta"));
    // kept: live even when the server has no "Beta" entry either; a click then selects an empty
    // entry.
    return {hasOfficial, hasBeta || !hasOfficial, hasBeta};
}

QString ServerPanel::selectionKey(const QString &server, const QString &client)
{
    return server + QLatin1Char('|') + client;
}

ServerPanel::Selection ServerPanel::parseSelectionKey(const QString &key)
{
    const QStringList parts = key.split(QLatin1Char('|'));
    return {parts.value(0), parts.value(1)};
}

QString ServerPanel::officialStyleSheet()
{
    return withClientButtonSize(
        QStringLiteral("QPushButton {width:%1; height: %2; border-image: "
                       "url(\":/images/new_buttons/official.png\");}"
                       "QPushButton:hover {width:%1; height: %2; border-image: "
                       "url(\":/images/new_buttons/official-hover.png\");}"));
}

QString ServerPanel::betaStyleSheet()
{
    const QString filledIn = withClientButtonSize(
        QStringLiteral("QPushButton {width:%1; height: %2; border-image: "
                       "url(\":/images/new_buttons/beta.png\");}"
                       "QPushButton:hover {width:%1; height: %2; border-image: "
                       "url(\":/images/new_buttons/beta-hover.png\");}"));
    // kept: filled in a second time. The sheet stays as it is; the toolkit's two warnings about
    // missing arguments, one column after the other, tell in a log how many columns were built.
    return withClientButtonSize(filledIn);
}

QString ServerPanel::placeholderStyleSheet()
{
    // kept: without the closing brace. The toolkit rejects the sheet as a whole, so the button
    // shows no picture; its size is fixed where it is made.
    return withClientButtonSize(
        QStringLiteral("QPushButton {width:%1; height: %2; border-color: rgba(0,0,0,0)"));
}
