// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// An application with as many metrics as the test wants. Each line of its input is a command:
//
//     create COUNT   creates that many metrics in the first health check
//     update VALUE   sets their value and publishes
//     remove COUNT   removes the oldest metrics
//     fill           publishes more than a connection holds, in a second health check
//     destroy        destroys the second health check
//     end            destroys the first one, and ends
//
// Prints each command after it has carried it out, and "leaving" before it ends.

#include <vigil/vigil.h>

#include <deque>
#include <iostream>
#include <sstream>
#include <string>

namespace {

class LargeApplication
{
public:
    void carryOut(const std::string& command)
    {
        std::istringstream words(command);
        std::string verb;
        int number = 0;
        words >> verb >> number;
        if (verb == "create")
            create(number);
        else if (verb == "update")
            update(number);
        else if (verb == "remove")
            remove(number);
        else if (verb == "fill")
            fill();
        else if (verb == "destroy")
            m_second->destroy();
    }

    void end() { m_first->destroy(); }

private:
    void create(int count)
    {
        for (int i = 0; i < count; ++i) {
            m_metrics.push_back(m_first->createScalarMetric("metric" + std::to_string(m_created++)));
            m_metrics.back()->setUnit(" s");
        }
    }

    void update(int value)
    {
        for (vigil::ScalarMetric* metric : m_metrics)
            metric->setValue(value);
        m_first->update();
    }

    void remove(int count)
    {
        for (int i = 0; i < count; ++i) {
            m_metrics.front()->remove();
            m_metrics.pop_front();
        }
    }

    /// Each of the metrics has a cell of its own for its unit.
    void fill()
    {
        constexpr int metrics = 800;
        constexpr std::size_t unitLength = 40000;
        for (int i = 0; i < metrics; ++i)
            m_second->createScalarMetric("filler" + std::to_string(i))->setUnit(std::string(unitLength, 'u'));
    }

    vigil::HealthCheck* m_first = vigil::createHealthCheck("large", "first");
    vigil::HealthCheck* m_second = vigil::createHealthCheck("large", "second");
    std::deque<vigil::ScalarMetric*> m_metrics;
    int m_created = 0;
};

} // namespace

int main()
{
    LargeApplication application;
    std::string command;
    while (std::getline(std::cin, command) && command != "end") {
        application.carryOut(command);
        std::cout << command << std::endl;
    }
    std::cout << "leaving" << std::endl;
    application.end();
    return 0;
}
