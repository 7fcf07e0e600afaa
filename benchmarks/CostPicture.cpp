// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/CostPicture.h"

#include <algorithm>
#include <fstream>
#include <ostream>
#include <vector>

#include "benchmarks/Figures.h"

namespace {

// In pixels. The metrics are 10, 100, 1000 and 10 000: one step each.
constexpr double left = 60;
constexpr double top = 20;
constexpr double step = 140;
constexpr double height = 220;
const std::vector<std::string> metrics = {"10", "100", "1000", "10000"};

struct Curve
{
    const char* what;
    const char* figure;
    const char* colour;
};

constexpr Curve curves[] = {
    {"whole process", " process ns a cell", "#b03060"},
    {"thread that calls update", " thread ns a cell", "#2060a0"},
};

std::string nameOf(const Curve& curve, const std::string& count)
{
    return "update/" + count + curve.figure;
}

bool isComplete()
{
    for (const Curve& curve : curves)
        for (const std::string& count : metrics)
            if (!figures::isKnown(nameOf(curve, count)))
                return false;
    return true;
}

/// The next full microsecond above all values, in nanoseconds.
double topOfScale()
{
    double highest = 0;
    for (const Curve& curve : curves)
        for (const std::string& count : metrics)
            highest = std::max(highest, figures::median(nameOf(curve, count)));
    return 1000 * (1 + static_cast<int>(highest / 1000));
}

double yOf(double nanoseconds, double scale)
{
    return top + height * (1 - nanoseconds / scale);
}

void drawText(std::ostream& svg, double x, double y, const char* anchor, const std::string& text)
{
    svg << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\">" << text
        << "</text>\n";
}

void drawAxes(std::ostream& svg, double scale)
{
    const double right = left + step * static_cast<double>(metrics.size() - 1);
    for (double value = 0; value <= scale; value += 1000) {
        const double y = yOf(value, scale);
        svg << "<line x1=\"" << left << "\" y1=\"" << y << "\" x2=\"" << right << "\" y2=\"" << y
            << "\" stroke=\"#ccc\"/>\n";
        drawText(svg, left - 8, y + 4, "end", std::to_string(static_cast<int>(value / 1000)) + " us");
    }
    for (std::size_t i = 0; i < metrics.size(); ++i)
        drawText(svg, left + step * static_cast<double>(i), top + height + 20, "middle", metrics[i]);
    drawText(svg, (left + right) / 2, top + height + 42, "middle", "metrics in one update");
}

void drawCurve(std::ostream& svg, const Curve& curve, double scale)
{
    svg << "<polyline fill=\"none\" stroke-width=\"2\" stroke=\"" << curve.colour << "\" points=\"";
    double y = 0;
    for (std::size_t i = 0; i < metrics.size(); ++i) {
        y = yOf(figures::median(nameOf(curve, metrics[i])), scale);
        svg << left + step * static_cast<double>(i) << "," << y << " ";
    }
    svg << "\"/>\n";
    drawText(svg, left + step * static_cast<double>(metrics.size() - 1) + 8, y + 4, "start", curve.what);
}

} // namespace

bool writeCostPicture(const std::string& path)
{
    if (!isComplete())
        return false;
    const double scale = topOfScale();
    std::ofstream svg(path);
    // REUSE-IgnoreStart
    svg << "<!-- SPDX-FileCopyrightText: 2026 The Vigil authors -->\n"
           "<!-- SPDX-License-Identifier: MIT -->\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"680\" height=\"300\" "
           "font-family=\"sans-serif\" "
           "font-size=\"13\">\n<title>Processor time of a published cell</title>\n"
           "<rect width=\"680\" height=\"300\" fill=\"white\"/>\n";
    // REUSE-IgnoreEnd
    drawAxes(svg, scale);
    for (const Curve& curve : curves)
        drawCurve(svg, curve, scale);
    svg << "</svg>\n";
    return svg.good();
}
