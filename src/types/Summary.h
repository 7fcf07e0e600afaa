// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_SUMMARY_H
#define VIGIL_TYPES_SUMMARY_H

#include <string>
#include <vector>

#include "types/ResultEntry.h"

namespace vigil {
class HealthCheck;
}

/// Writes the one-line summary of a health check. Stateless; texts are UTF-8.
class Summary
{
public:
    /// The summary if all results are OK: the check's description.
    virtual std::string summarizeOk(const vigil::HealthCheck& check,
                                    const std::vector<ResultEntry>& entries) const;

    /// The summary otherwise: the description, " - " and the texts of all results other than OK.
    virtual std::string summarizeProblems(const vigil::HealthCheck& check,
                                          const std::vector<ResultEntry>& entries) const;

    virtual ~Summary() = default;
};

#endif
