// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_SHOWNCELLS_H
#define VIGIL_SUPPORT_SHOWNCELLS_H

#include <map>
#include <string>
#include <vector>

#include "support/FakeService.h"
#include "support/Publications.h"

namespace support {

/// What a service shows after it has read publications. It forgets the cells of a lost connection.
class ShownCells
{
public:
    ShownCells() = default;

    explicit ShownCells(const std::vector<FakeService::Frame>& frames)
    {
        for (const FakeService::Frame& frame : frames)
            read(frame);
    }

    void read(const FakeService::Frame& frame)
    {
        const std::string line = describe(frame);
        if (line.rfind("answer ", 0) == 0)
            return;
        if (frame.connection != m_connection)
            m_cells.clear();
        m_connection = frame.connection;
        const std::string oid = line.substr(0, line.find(' '));
        if (line == unset(oid))
            remove(oid);
        else
            write(oid, line.substr(0, line.find(" (trap)")));
    }

    void write(const std::string& oid, const std::string& line) { m_cells[oid] = line; }

    /// With all descendants.
    void remove(const std::string& tree)
    {
        m_cells.erase(tree);
        // In the order of texts a slash follows a dot, so all descendants are between the two.
        m_cells.erase(m_cells.lower_bound(tree + '.'), m_cells.lower_bound(tree + '/'));
    }

    /// From the identifier to the publication, without its notification.
    const std::map<std::string, std::string>& cells() const { return m_cells; }

private:
    int m_connection = 0;
    std::map<std::string, std::string> m_cells;
};

} // namespace support

#endif
