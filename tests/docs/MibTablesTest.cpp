// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QtGlobal>

#include <set>
#include <string>
#include <utility>

#include "agent/cells/VigilTables.h"
#include "agent/netsnmp/NetSnmp.h"

namespace vigilTables = agent::vigilTables;
using vigilTables::Column;
using vigilTables::Type;

namespace {

/// VIGIL-MIB as Net-SNMP reads it.
class MibTables : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        qputenv("MIBS", "");
        netsnmp_set_mib_directory(VIGIL_MIBDIRS);
        netsnmp_init_mib();
        netsnmp_read_module("VIGIL-MIB");
    }

    static const tree* node(const std::string& name)
    {
        return find_tree_node(name.c_str(), which_module("VIGIL-MIB"));
    }

    /// The limits of the numbers or of the length, whichever the syntax has.
    static std::pair<int, int> limitsOf(const tree& object)
    {
        std::set<int> limits;
        for (const enum_list* each = object.enums; each; each = each->next)
            limits.insert(each->value);
        for (const range_list* each = object.ranges; each; each = each->next)
            limits.insert({each->low, each->high});
        return limits.empty() ? std::pair(-1, -1) : std::pair(*limits.begin(), *limits.rbegin());
    }

    static size_t readableChildren(const tree& entry)
    {
        size_t count = 0;
        for (const tree* child = entry.child_list; child; child = child->next_peer)
            count += child->access == MIB_ACCESS_NOACCESS ? 0 : 1;
        return count;
    }
};

} // namespace

TEST_F(MibTables, TheAgentKnowsEveryTableOfTheModule)
{
    const tree* module = node("vigilMIB");
    ASSERT_TRUE(module);
    std::set<std::string> tables;
    for (const tree* child = module->child_list; child; child = child->next_peer) {
        if (std::string(child->label).find("Table") != std::string::npos)
            tables.insert(child->label);
    }
    std::set<std::string> known;
    for (const vigilTables::Table& table : vigilTables::all()) {
        known.insert(table.name);
        ASSERT_TRUE(node(table.name)) << table.name;
        EXPECT_EQ(node(table.name)->subid, table.number) << table.name;
    }
    EXPECT_EQ(known, tables);
}

TEST_F(MibTables, ColumnsAndIndexesAreThoseOfTheModule)
{
    for (const vigilTables::Table& table : vigilTables::all()) {
        ASSERT_TRUE(node(table.name) && node(table.name)->child_list) << table.name;
        const tree& entry = *node(table.name)->child_list;
        EXPECT_EQ(readableChildren(entry), table.columns.size()) << table.name;
        int keys = 0;
        for (const index_list* key = entry.indexes; key; key = key->next)
            ++keys;
        EXPECT_EQ(keys, table.keys) << table.name;
        for (const Column& column : table.columns) {
            const tree* object = node(column.name);
            ASSERT_TRUE(object) << column.name;
            EXPECT_EQ(object->parent, &entry) << column.name;
            EXPECT_EQ(object->subid, column.number) << column.name;
            EXPECT_EQ(object->type, column.type == Type::Integer ? TYPE_INTEGER : TYPE_OCTETSTR)
                << column.name;
            EXPECT_EQ(object->access, column.isWritable ? MIB_ACCESS_READWRITE : MIB_ACCESS_READONLY)
                << column.name;
            EXPECT_EQ(limitsOf(*object), std::pair(column.least, column.most)) << column.name;
        }
    }
}
