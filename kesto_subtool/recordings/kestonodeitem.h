// A node of a recording in the player's tree.
#pragma once

#include <QTreeWidgetItem>

#include "recordings/childtimes.h"
#include "recordings/kestofile.h"

// Holds figures and makes texts of them when they are asked for, so that showing another frame costs nothing for rows
// that nobody sees.
class CKestoNodeItem final : public QTreeWidgetItem
{
public:
	enum Column
	{
		COLUMN_NAME,
		COLUMN_INCLUSIVE,
		COLUMN_EXCLUSIVE,
		COLUMN_CALLS,
		COLUMN_COUNT
	};

	// The file must outlive the item. nRow is the node's row in the recording's NodeRows.
	CKestoNodeItem( const CKestoFile &file, int32_t nNode, int32_t nRow );

	int32_t GetNode() const { return m_nNode; }
	int32_t GetRow() const { return m_nRow; }

	// Takes the node's figures from a frame, of which the child times are. Where calls and time are both 0 the cells
	// are empty, and the tool tip stays what it was.
	void SetFrame( CKestoFile::CTickTimings &frame, CChildTimes &childTimes );

	QVariant data( int nColumn, int nRole ) const override;

	// Numbers as numbers; "-" below them and empty cells below that.
	bool operator<( const QTreeWidgetItem &other ) const override;

private:
	bool IsEmpty() const { return m_Entry.m_nCalls == 0 && m_Entry.m_nTime == 0; }
	QString GetFigureText( int nColumn ) const;
	int64_t GetFigure( int nColumn ) const;

	const CKestoFile &m_File;
	int32_t m_nNode;
	int32_t m_nRow;
	CKestoFile::CTickTimings::Entry m_Entry{};
	int32_t m_nExclusive = 0;
	bool m_bHasToolTip = false;
};
