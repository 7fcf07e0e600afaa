// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/RepeatedLines.h"

#include <QTimer>

#include <new>

#include "base/Printable.h"

namespace base {

namespace {

constexpr int maxKindSize = 80; // the rest may come from the peer

QString kindOf(const QString& text)
{
    QString kind;
    for (const QChar character : text.left(maxKindSize)) {
        if (!character.isDigit())
            kind += character;
    }
    return kind;
}

} // namespace

RepeatedLines::RepeatedLines(Write write, QObject* parent, int intervalMs)
    : QObject(parent), m_write(std::move(write)), m_intervalMs(intervalMs)
{}

void RepeatedLines::write(const QString& text)
{
    try {
        writeOrCount(text);
    } catch (const std::bad_alloc&) { // the line is lost
    }
}

void RepeatedLines::writeOrCount(const QString& text)
{
    const QString name = kindOf(text);
    if (!m_kinds.contains(name))
        watch(name);
    Kind& kind = m_kinds[name];
    if (kind.written < maxLines) {
        ++kind.written;
        m_write(text);
    } else {
        kind.latest = text;
        ++kind.leftOut;
    }
}

void RepeatedLines::watch(const QString& kind)
{
    // Coarse: on Windows a precise timer needs the loader's lock, which is held while the library is
    // unloaded.
    QTimer::singleShot(m_intervalMs, Qt::CoarseTimer, this, [this, kind] {
        try {
            endInterval(kind);
        } catch (const std::bad_alloc&) { // the count is lost
        }
    });
}

void RepeatedLines::endInterval(const QString& kind)
{
    const Kind ended = m_kinds.take(kind);
    if (ended.leftOut == 0)
        return;
    m_kinds.insert(kind, {QString(), maxLines, 0});
    watch(kind);
    reportLeftOut(ended);
}

void RepeatedLines::reportLeftOut(const Kind& kind)
{
    m_write(QStringLiteral("___ERROR___ %1 more lines like this were left out: %2")
                .arg(QString::number(kind.leftOut), printable(kind.latest)));
}

void RepeatedLines::finish()
{
    for (Kind& kind : m_kinds) {
        if (kind.leftOut > 0)
            reportLeftOut(kind);
        kind.leftOut = 0;
    }
}

} // namespace base
