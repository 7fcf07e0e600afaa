// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_EXAMPLES_TESTED_APPLICATION_ORDERQUEUE_H
#define VIGIL_EXAMPLES_TESTED_APPLICATION_ORDERQUEUE_H

#include <vigil/raii.h>

#include <atomic>
#include <string>
#include <vector>

/// A queue that publishes its length. Management function 1 pauses it.
class OrderQueue
{
public:
    OrderQueue();

    void add(const std::string& order);
    void takeAll();
    bool isPaused() const { return m_isPaused; }

private:
    void publish();

    std::vector<std::string> m_orders;
    std::atomic<bool> m_isPaused{false}; // functions run on the library's thread

    // The functions use the members above, so the check ends first.
    vigil::CheckHandle m_check{"shop", "orders"};
    vigil::ScalarHandle m_length{m_check, "length"};
};

#endif
