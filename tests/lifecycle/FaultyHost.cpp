// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host whose system fails. Its arguments are the function, the first call that fails, and how many do. It
// updates a check until it reads "leave". At "heal" the faults end, at "again" it destroys the check and
// creates it again.

#include <vigil/vigil.h>

#include <chrono>
#include <deque>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

#include "support/FaultySystem.h"

namespace {

vigil::HealthCheck* makeCheck()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->setDescription("published beside faults");
    check->createScalarMetric("metric");
    check->update();
    return check;
}

/// The lines of the test, read in a thread of its own.
class Orders
{
public:
    /// True if line is the next one, which is then taken.
    bool take(const std::string& line)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const bool isLine = !m_lines.empty() && m_lines.front() == line;
        if (isLine)
            m_lines.pop_front();
        return isLine;
    }

private:
    void read()
    {
        std::string line;
        while (line != "leave" && std::getline(std::cin, line)) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_lines.push_back(line);
        }
    }

    std::mutex m_mutex;
    std::deque<std::string> m_lines;
    std::thread m_reader{[this] { read(); }};

public:
    ~Orders() { m_reader.join(); }
};

} // namespace

int main(int, char** arguments)
{
    Orders orders;
    if (!faults::plan(arguments[1], std::stoi(arguments[2]), std::stoi(arguments[3])))
        return 1;
    vigil::HealthCheck* check = makeCheck();
    std::cout << "running" << std::endl;
    while (!orders.take("leave")) {
        if (orders.take("heal"))
            faults::end();
        if (orders.take("again")) {
            check->destroy();
            check = makeCheck();
        }
        check->update();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}
