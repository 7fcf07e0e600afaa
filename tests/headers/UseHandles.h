// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Instantiates the templates of the headers; compiled in each version of the language, never run.

#include <vigil/raii.h>

#include <chrono>
#include <utility>

inline void useHandles()
{
    vigil::CheckHandle check("first", "second");
    check.setFunction(1, [] {});
    vigil::ScalarHandle scalar(check, "scalar");
    scalar.setRangeHandler([](vigil::RangeKind, const vigil::Range& range) { return range.isEnabled(); },
                           [](vigil::RangeKind, const vigil::Range&) {});
    vigil::SimpleHandle simple(check, "simple");
    const vigil::ConnectionWatch watch([](bool) {});
    vigil::Updater updater(std::chrono::seconds(1));
    updater.add(check);
    updater.add(scalar, [] { return 1; });
    updater.add(simple, [] { return vigil::Reading{vigil::HealthStatus::Ok, "fine"}; });
    updater.start();
    const vigil::ScalarHandle moved(std::move(scalar));
    simple = vigil::SimpleHandle();
}

void useAll();
void useAll()
{
    useHandles();
}
