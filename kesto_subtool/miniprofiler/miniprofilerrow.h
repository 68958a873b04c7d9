// The rows of the mini-profiler: a record for each scope of the engine, and the groups that sum them up.
#pragma once

#include <QColor>
#include <QFont>
#include <QMetaType>
#include <QStaticText>
#include <QString>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "miniprofiler/miniprofilercolumns.h"

class CMiniProfilerGroup;
class CQMiniProfilerRowItem;

enum MiniProfilerRowFlag : uint32_t
{
	MINIPROFILER_ROW_RECORD = 1,
	MINIPROFILER_ROW_GROUP = 2,
	MINIPROFILER_ROW_IDLE = 4,          // no calls and no time over the whole history
	MINIPROFILER_ROW_DUPLICATE = 8,     // another record has the same name
	MINIPROFILER_ROW_DISAMBIGUATE = 16, // the user wants to see the caller's name
	MINIPROFILER_ROW_COLOURED = 32      // m_Colour is a budget's colour
};

// What the tree view has not caught up with yet.
enum MiniProfilerRowChange : uint8_t
{
	MINIPROFILER_ROW_RENAMED = 1,
	MINIPROFILER_ROW_MOVED = 2,
	MINIPROFILER_ROW_QUEUED = 4 // the row is in the model's list of changes
};

constexpr int MINIPROFILER_MAX_DRAWN_NAME = 256; // characters, wider than a column

class CMiniProfilerRow
{
public:
	virtual ~CMiniProfilerRow();
	CMiniProfilerRow( const CMiniProfilerRow & ) = delete;
	CMiniProfilerRow &operator=( const CMiniProfilerRow & ) = delete;

	const QString &Name() const { return m_Name; }
	bool IsNamed() const { return m_bNamed; } // by SetName, maybe with an empty name

	// The name as it is drawn, laid out once for each font, so that its size is right before it is first drawn.
	const QStaticText &LaidOutName( const QFont &font );
	void SetName( const QString &name );

	bool HasFlag( MiniProfilerRowFlag flag ) const { return ( m_nFlags & flag ) != 0; }
	void SetFlag( MiniProfilerRowFlag flag, bool bOn = true );
	void SetBudgetColour( const QColor &colour );

	const MiniProfilerArray &Array( MiniProfilerSortArray array ) const;

	MiniProfilerArray m_Ave{};
	MiniProfilerArray m_StDev{};
	MiniProfilerArray m_Cur{};
	MiniProfilerArray m_Peaks{};

	CQMiniProfilerRowItem *m_pItem = nullptr; // the tree view's, and owned by it; null until it is shown

	// Where the row hangs in the tree: under a group or a record, or at the top level (null). The tree's items follow.
	CMiniProfilerRow *m_pTreeParent = nullptr;
	uint8_t m_nChanges = 0; // MiniProfilerRowChange bits

	QColor m_Colour;

protected:
	explicit CMiniProfilerRow( MiniProfilerRowFlag kind );

private:
	uint32_t m_nFlags;
	bool m_bNamed = false;
	QString m_Name;
	QStaticText m_StaticName;
	QFont m_NameFont; // that the name is laid out in
	bool m_bNameLaidOut = false;
};

// What Q_DECLARE_METATYPE would say, but that a type which it declares can never be taken back: the toolkit would go on
// holding functions of the module when that has left the process. This one goes with the module.
template <>
struct QMetaTypeId<CMiniProfilerRow *>
{
	enum
	{
		Defined = 1
	};
	static int qt_metatype_id(); // registers the type as "CMiniProfilerRow*" at the first call
};

class CQMiniProfilerRecord final : public CMiniProfilerRow
{
public:
	// nHistoryIndex says where the record's samples are. An id of 0 is the profiler system's own cost.
	CQMiniProfilerRecord( uint64_t nId, uint32_t nHistoryIndex );

	uint64_t Id() const { return m_nId; } // the scope's address in the engine
	uint32_t HistoryIndex() const { return m_nHistoryIndex; }

	// Keeps a copy and cuts it at every line feed; text behind the last one is no line. Line 2, the source file, gets
	// lower-case ASCII letters and slashes in place of backslashes when it is there.
	void SetDescription( std::string_view description );

	const QString &Description() const { return m_WholeDescription; } // as it came
	size_t LineCount() const { return m_Lines.size(); }
	std::string_view Line( size_t nIndex ) const; // UTF-8; empty for a missing line

	// What the lines mean; the fourth line has no use here.
	static constexpr size_t LINE_BUDGET = 0;
	static constexpr size_t LINE_FUNCTION = 1;
	static constexpr size_t LINE_FILE = 2;
	static constexpr size_t LINE_PROJECT = 4;

	CQMiniProfilerRecord *m_pStaticParent = nullptr; // from the name stream
	CQMiniProfilerRecord *m_pCaller = nullptr;       // from the latest interval that had one
	CMiniProfilerGroup *m_pGroup = nullptr;

private:
	uint64_t m_nId;
	uint32_t m_nHistoryIndex;
	QString m_WholeDescription;
	std::unique_ptr<char[]> m_pDescription;
	std::vector<std::string_view> m_Lines; // into m_pDescription
};

class CMiniProfilerGroup final : public CMiniProfilerRow
{
public:
	CMiniProfilerGroup( const QString &name, CMiniProfilerGroup *pParent, int32_t nIndex );

	CMiniProfilerGroup *Parent() const { return m_pParent; } // null for a top-level group

	void ResetStatistics();

	// Adds a row's statistics: averages, current values and peaks add up, deviations combine in quadrature.
	void Merge( const CMiniProfilerRow &row );

	int32_t m_nIndex;       // position in the list of groups
	int32_t m_nMembers = 0; // rows merged since ResetStatistics

private:
	CMiniProfilerGroup *m_pParent;
};

// The row as a record or a group; null when it is the other.
inline CQMiniProfilerRecord *AsRecord( CMiniProfilerRow *pRow )
{
	const bool bRecord = pRow && pRow->HasFlag( MINIPROFILER_ROW_RECORD );
	return bRecord ? static_cast<CQMiniProfilerRecord *>( pRow ) : nullptr;
}
inline const CQMiniProfilerRecord *AsRecord( const CMiniProfilerRow *pRow )
{
	return AsRecord( const_cast<CMiniProfilerRow *>( pRow ) );
}
inline const CMiniProfilerGroup *AsGroup( const CMiniProfilerRow *pRow )
{
	const bool bGroup = pRow && pRow->HasFlag( MINIPROFILER_ROW_GROUP );
	return bGroup ? static_cast<const CMiniProfilerGroup *>( pRow ) : nullptr;
}
