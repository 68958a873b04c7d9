// The tree item of a mini-profiler row. It stores nothing: everything it is asked for comes from the row.
#pragma once

#include <QTreeWidgetItem>

#include "miniprofiler/miniprofilerrow.h"

class CQMiniProfilerRowItem final : public QTreeWidgetItem
{
public:
	// Binds the row to the item until the item ends; the row must outlive it.
	explicit CQMiniProfilerRowItem( CMiniProfilerRow &row );
	~CQMiniProfilerRowItem() override;
	CQMiniProfilerRowItem( const CQMiniProfilerRowItem & ) = delete;
	CQMiniProfilerRowItem &operator=( const CQMiniProfilerRowItem & ) = delete;

	CMiniProfilerRow &Row() const { return m_Row; }

	QVariant data( int nColumn, int nRole ) const override;

	// By the tree's sort column: numbers by the array that the tree is sorted by, names as text.
	bool operator<( const QTreeWidgetItem &other ) const override;

	// While the tree sorts by keys, it is these that are compared: they lie in the items, and sorting a hundred
	// thousand of them need not touch as many rows again and again.
	void SetSortKey( float flKey ) { m_flSortKey = flKey; }

	// The row's name has changed.
	void NotifyRenamed() { emitDataChanged(); }

private:
	CMiniProfilerRow &m_Row;
	float m_flSortKey = 0.0f;
};

// Every item of the mini-profiler's tree is one of these.
inline CMiniProfilerRow &RowOf( const QTreeWidgetItem &item )
{
	return static_cast<const CQMiniProfilerRowItem &>( item ).Row();
}
