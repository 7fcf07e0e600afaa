// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_DOCUMENTS_SERIESLABELS_H
#define VIGIL_AGENT_DOCUMENTS_SERIESLABELS_H

#include <QByteArray>

#include "agent/core/ObjectId.h"

namespace agent {

/// The labels of a check or metric for Prometheus: first, second and, for a metric, metric. row is the index
/// of its row.
///
/// Two rows never have the same labels, since Prometheus would refuse the whole reply. Keys that are not
/// valid UTF-8, or have control characters or backslashes, are written with "\xff" for such bytes.
QByteArray seriesLabels(const ObjectId& row);

/// A label's value, in quotes.
QByteArray labelValue(const QByteArray& text);

} // namespace agent

#endif
