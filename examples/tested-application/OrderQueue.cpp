// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "OrderQueue.h"

OrderQueue::OrderQueue()
{
    m_check.setDescription("Orders");
    m_check.setFunction(1, [this] { m_isPaused = true; });
    m_length.setUnit("orders");
    m_length.setWarningRange(vigil::Range::CreateThresholdAbove(2));
    m_length.setRangeHandler([](vigil::RangeKind, const vigil::Range& range) { return range.isEnabled(); });
    publish();
}

void OrderQueue::add(const std::string& order)
{
    m_orders.push_back(order);
    publish();
}

void OrderQueue::takeAll()
{
    m_orders.clear();
    publish();
}

void OrderQueue::publish()
{
    m_length.setValue(static_cast<double>(m_orders.size()));
    m_check.update();
}
