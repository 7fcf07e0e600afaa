// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_DOCUMENTREADER_H
#define VIGILCTL_DOCUMENTREADER_H

#include <QByteArray>
#include <QObject>

namespace vigilctl {

/// Asks an agent for its document (docs/checks.schema.json), in one of two ways.
class DocumentReader : public QObject
{
    Q_OBJECT

public:
    /// finished() follows.
    virtual void read() = 0;

    /// The agent's address, in messages.
    virtual QString address() const = 0;

signals:
    /// problem is empty unless there is no answer.
    void finished(const QByteArray& answer, const QString& problem);
};

} // namespace vigilctl

#endif
