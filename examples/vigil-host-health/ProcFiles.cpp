// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ProcFiles.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <locale>
#include <map>
#include <sstream>
#include <utility>

namespace procfiles {

namespace {

/// The kernel's numbers do not depend on the user's locale.
template <typename Text>
Text inClassicLocale(const std::string& text)
{
    Text stream(text);
    stream.imbue(std::locale::classic());
    return stream;
}

std::optional<double> parseFirstNumber(const std::string& text)
{
    auto stream = inClassicLocale<std::istringstream>(text);
    double number = 0.0;
    if (!(stream >> number) || number < 0.0)
        return std::nullopt;
    return number;
}

using Amounts = std::map<std::string, double>;

Amounts parseAmounts(const std::string& text)
{
    Amounts amounts;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos)
            continue;
        if (const auto amount = parseFirstNumber(line.substr(colon + 1)))
            amounts[line.substr(0, colon)] = *amount;
    }
    return amounts;
}

/// Nothing unless both amounts exist and the whole is above 0.
std::optional<double> usedPercent(const Amounts& amounts, const char* wholeName, const char* freeName)
{
    const auto whole = amounts.find(wholeName);
    const auto free = amounts.find(freeName);
    if (whole == amounts.end() || free == amounts.end() || whole->second <= 0.0)
        return std::nullopt;
    return 100.0 * (whole->second - (std::min)(free->second, whole->second)) / whole->second;
}

bool isOctalDigit(char c)
{
    return c >= '0' && c <= '7';
}

/// A blank or backslash in a name is written as a backslash and three octal digits.
std::string unescape(const std::string& text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '\\' && i + 3 < text.size() && isOctalDigit(text[i + 1]) &&
                              isOctalDigit(text[i + 2]) && isOctalDigit(text[i + 3]);
        if (!isEscape) {
            plain += text[i];
            continue;
        }
        plain += static_cast<char>(std::stoi(text.substr(i + 1, 3), nullptr, 8));
        i += 3;
    }
    return plain;
}

/// Fields: id, parent, device, root, mount point, options, any number of optional fields, "-", file system
/// type, source, options of the file system.
std::optional<Mount> parseMount(const std::string& line)
{
    std::istringstream stream(line);
    const std::vector<std::string> fields{std::istream_iterator<std::string>(stream), {}};
    constexpr std::ptrdiff_t fieldsBeforeOptional = 6;
    if (fields.size() < fieldsBeforeOptional)
        return std::nullopt;
    const auto separator = std::find(fields.begin() + fieldsBeforeOptional, fields.end(), "-");
    if (std::distance(separator, fields.end()) < 3)
        return std::nullopt;
    return Mount{fields[2], unescape(fields[3]), unescape(fields[4]), separator[1], unescape(separator[2])};
}

/// Read-only images, always full.
bool isImage(const std::string& fileSystem)
{
    static const std::array<std::string, 4> images = {"squashfs", "erofs", "iso9660", "udf"};
    return std::find(images.begin(), images.end(), fileSystem) != images.end();
}

bool isDisk(const Mount& mount)
{
    return mount.source.rfind("/dev/", 0) == 0 && !isImage(mount.fileSystem);
}

/// A whole disk is better than a bind mount of one of its folders; otherwise the shorter name is better.
bool isBetter(const Mount& candidate, const Mount& known)
{
    const bool isWhole = candidate.root == "/";
    if (isWhole != (known.root == "/"))
        return isWhole;
    return candidate.mountPoint.size() < known.mountPoint.size();
}

} // namespace

std::optional<double> parseLoad(const std::string& text)
{
    return parseFirstNumber(text);
}

std::optional<double> parseUptimeSeconds(const std::string& text)
{
    return parseFirstNumber(text);
}

std::optional<MemoryUse> parseMemory(const std::string& text)
{
    const Amounts amounts = parseAmounts(text);
    const auto memory = usedPercent(amounts, "MemTotal", "MemAvailable");
    if (!memory)
        return std::nullopt;
    return MemoryUse{*memory, usedPercent(amounts, "SwapTotal", "SwapFree").value_or(0.0)};
}

std::vector<Mount> parseMounts(const std::string& text)
{
    std::vector<Mount> mounts;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (auto mount = parseMount(line))
            mounts.push_back(std::move(*mount));
    }
    return mounts;
}

std::vector<Mount> selectDisks(const std::vector<Mount>& mounts)
{
    std::map<std::string, Mount> best; // by source: each volume of a pool has its own device number
    for (const Mount& mount : mounts) {
        if (!isDisk(mount))
            continue;
        const auto [known, isNew] = best.try_emplace(mount.source, mount);
        if (!isNew && isBetter(mount, known->second))
            known->second = mount;
    }
    std::vector<Mount> disks;
    disks.reserve(best.size());
    for (const auto& entry : best)
        disks.push_back(entry.second);
    if (disks.empty())
        std::copy_if(mounts.begin(), mounts.end(), std::back_inserter(disks),
                     [](const Mount& mount) { return mount.mountPoint == "/"; });
    return disks;
}

bool isProcessName(const std::string& name)
{
    return !name.empty() &&
           std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace procfiles
