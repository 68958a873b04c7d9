// Under which groups a record is filed, and under which row it hangs. Functions of texts and rows; nothing is changed.
#pragma once

#include <QHash>
#include <QString>
#include <QStringView>
#include <functional>
#include <string_view>

#include "miniprofiler/miniprofilerrow.h"

enum class MiniProfilerGroupMode : int
{
	None = 0,
	Budget = 3,
	File = 4,
	BudgetAndFile = 5, // not offered: file groups below the budget's group
	Function = 6,
	Project = 7
};

enum class MiniProfilerLeafMode : int
{
	None = 0,
	StaticTree = 1, // below the static parent
	DynamicTree = 2 // below the latest caller
};

// Any other number counts as None.
MiniProfilerGroupMode MiniProfilerGroupModeOf( int nValue );
MiniProfilerLeafMode MiniProfilerLeafModeOf( int nValue );

// Rows above each other: groups of a path, and records below each other. Real ones have a few dozen at most; whoever
// walks down a tree does it by recursion, and an engine must not be able to make that too deep.
constexpr size_t MINIPROFILER_MAX_PATH_LEVELS = 64;
constexpr size_t MINIPROFILER_MAX_RECORD_LEVELS = 256;

// Calls found( key, name ) for every group of a path, outermost first. Components end at "/", "\", ":" or "::"; a
// group's key is the path up to the end of its component, its name the component with the separator before it: a/b has
// the groups "a" under the key "a" and "/b" under the key "a/b". A path that begins with a separator has an empty first
// component: its key and name are empty. The last key is the whole path; an empty path has none. The last of
// MINIPROFILER_MAX_PATH_LEVELS groups has the rest of the path as its name.
void SplitMiniProfilerPath(
	std::string_view path, const std::function<void( std::string_view key, std::string_view name )> &found );

// What a group is found by: the beginning of a text. The groups of one path share its text, which would otherwise be
// kept once for every level.
struct MiniProfilerGroupKey
{
	QString m_Text;
	int m_nLength = 0; // 0 <= m_nLength <= m_Text.size()

	QStringView View() const { return QStringView( m_Text ).left( m_nLength ); }

	friend bool operator==( const MiniProfilerGroupKey &a, const MiniProfilerGroupKey &b )
	{
		return a.View() == b.View();
	}
	friend uint qHash( const MiniProfilerGroupKey &key, uint nSeed = 0 ) { return qHash( key.View(), nSeed ); }
};

// How many leading bytes two texts share. Not in the middle of a UTF-8 character.
size_t CommonPrefixLength( std::string_view a, std::string_view b );

// What is left of a source path behind the part that it shares with the common prefix.
inline std::string_view WithoutCommonPrefix( std::string_view path, std::string_view prefix )
{
	return path.substr( CommonPrefixLength( path, prefix ) );
}

// The row under which a record's item belongs: its static parent or caller (as the mode says, when that is in the same
// group), else its group; null is the tree's top level. A record that would come to hang below itself, or below
// MINIPROFILER_MAX_RECORD_LEVELS others, goes to its group.
CMiniProfilerRow *MiniProfilerPlacementTarget( const CQMiniProfilerRecord &record, MiniProfilerLeafMode mode );
