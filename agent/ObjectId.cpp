#include "ObjectId.h"

#include <algorithm>
#include <charconv>

namespace agent {

const ObjectId& enterpriseRoot()
{
    static const ObjectId root{1, 3, 6, 1, 4, 1, 32473};
    return root;
}

std::optional<ObjectId> fromRelativeText(const std::string& text)
{
    ObjectId id = enterpriseRoot();
    if (text.empty())
        return id;
    const char* position = text.data();
    const char* const end = position + text.size();
    while (true) {
        unsigned int arc = 0;
        const auto [next, failure] = std::from_chars(position, end, arc);
        if (failure != std::errc())
            return std::nullopt;
        id.push_back(arc);
        if (next == end)
            return id;
        if (*next != '.')
            return std::nullopt;
        position = next + 1;
    }
}

std::string toRelativeText(const ObjectId& id)
{
    std::string text;
    for (size_t i = enterpriseRoot().size(); i < id.size(); ++i) {
        if (!text.empty())
            text += '.';
        text += std::to_string(id[i]);
    }
    return text;
}

QString toText(const ObjectId& id)
{
    QString text;
    for (const unsigned int arc : id) {
        if (!text.isEmpty())
            text += QLatin1Char('.');
        text += QString::number(arc);
    }
    return text;
}

bool isInTree(const ObjectId& tree, const ObjectId& id)
{
    return tree.size() <= id.size() && std::equal(tree.begin(), tree.end(), id.begin());
}

} // namespace agent
