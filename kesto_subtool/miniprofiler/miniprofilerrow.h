// The rows of the mini-profiler: a record for each scope of the engine, and the groups that sum them up.
#pragma once

#include <QColor>
#include <QFont>
#include <QMetaType>
#include <QStaticText>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "miniprofiler/miniprofilercolumns.h"
#include "miniprofiler/miniprofilerdescription.h"

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

	// The name as it is drawn, laid out when it is first asked for in a font, so that its size is right before it is
	// drawn. Valid until the next call and the next SetName.
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

	// Most rows are never seen, and a text that is laid out is larger than the rest of a row.
	struct LaidOutText;
	std::unique_ptr<LaidOutText> m_pLaidOutName;
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

	// Empty until it is set.
	void SetDescription( std::string_view description );
	QString Description() const;                                                                  // as it came
	size_t DescriptionSize() const { return m_pDescription ? m_pDescription->Text().size() : 0; } // bytes

	// As CMiniProfilerDescription has them.
	size_t LineCount() const { return m_pDescription ? m_pDescription->LineCount() : 0; }
	std::string_view Line( size_t nIndex ) const
	{
		return m_pDescription ? m_pDescription->Line( nIndex ) : std::string_view();
	}
	bool HasLine( const std::function<bool( std::string_view )> &matches ) const
	{
		return m_pDescription && m_pDescription->HasLine( matches );
	}

	CQMiniProfilerRecord *m_pStaticParent = nullptr; // from the name stream
	CQMiniProfilerRecord *m_pCaller = nullptr;       // from the latest interval that had one
	CMiniProfilerGroup *m_pGroup = nullptr;

private:
	uint64_t m_nId;
	uint32_t m_nHistoryIndex;
	std::unique_ptr<CMiniProfilerDescription> m_pDescription; // null for an empty one
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
