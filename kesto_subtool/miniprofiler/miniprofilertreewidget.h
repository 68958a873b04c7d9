// The tree of the mini-profiler: shows the rows of a model and keeps its place while they come, move and go.
#pragma once

#include <QTreeWidget>
#include <memory>
#include <vector>

#include "miniprofiler/miniprofilerrow.h"
#include "miniprofiler/miniprofilertexts.h"

class CMiniProfilerModel;
class CQMiniProfilerRowItem;

class CQMiniProfilerTreeWidget final : public QTreeWidget
{
	Q_OBJECT

public:
	explicit CQMiniProfilerTreeWidget( QWidget *pParent );
	~CQMiniProfilerTreeWidget() override;

	// Opened by a right press; belongs to somebody else.
	void SetContextMenu( QMenu *pMenu ) { m_pContextMenu = pMenu; }
	void OpenContextMenu( const QPoint &ptGlobal ); // nothing when it is open

	// What the number columns show, by which they are sorted and measured.
	void SetNumbers( const MiniProfilerNumbers &numbers ) { m_Numbers = numbers; }
	MiniProfilerSortArray SortArray() const { return m_Numbers.SortArray(); }
	bool SortsByKeys() const { return m_bSortsByKeys; } // the items' keys are up to date

	// Sets the header labels that differ; the user's column widths stay.
	void SetHeaderTexts( const QStringList &texts );

	// Gives every column of numbers room for its label. Names get the rest of the view's width, and at least room for a
	// long one, until the user sets any column's width: from then on all stay.
	void SetStartWidths( const QStringList &labels );

	// Makes, moves, renames and deletes items as the model's rows have changed. Selection, current item, expansion and
	// scroll position stay.
	void Follow( CMiniProfilerModel &model );

	// Puts the rows in the order of the sort column. Nothing moves, and no layout is made, when they are in order.
	void RestoreOrder();

	// The rows whose items intersect the viewport, from the top.
	std::vector<CMiniProfilerRow *> VisibleRows() const;
	std::vector<CMiniProfilerRow *> SelectedRows() const; // from the top

	// Selects the items of these rows, deselects all others, and opens and scrolls so that the topmost can be seen.
	void SelectRows( const std::vector<CMiniProfilerRow *> &rows );

	// All rows with items in the order of the tree, also those in closed branches.
	std::vector<CMiniProfilerRow *> RowsInOrder() const;

signals:
	void CopyRequested();
	void JumpToParentRequested( QTreeWidgetItem *pItem );

protected:
	void mousePressEvent( QMouseEvent *pEvent ) override;
	void keyPressEvent( QKeyEvent *pEvent ) override;
	void resizeEvent( QResizeEvent *pEvent ) override;
	int sizeHintForColumn( int nColumn ) const override; // what the visible rows need
	void paintEvent( QPaintEvent *pEvent ) override;     // without rows it says so

private slots:
	void OnSectionResized();

private:
	struct Changes
	{
		std::vector<CMiniProfilerRow *> m_New; // their items are not in the tree yet
		std::vector<CMiniProfilerRow *> m_Moved;
		std::vector<CMiniProfilerRow *> m_Renamed; // and not moved
		std::vector<std::unique_ptr<CMiniProfilerGroup>> m_RemovedGroups;
	};
	struct PlacesKept;

	static Changes TakeChanges( CMiniProfilerModel &model );
	std::vector<CMiniProfilerRow *> SelectedRowsInAnyOrder() const;
	PlacesKept KeepPlaces( const std::vector<CMiniProfilerRow *> &rows ) const;
	void RestorePlaces( PlacesKept &places );
	void TakeItem( QTreeWidgetItem &item );
	void InsertItems( const std::vector<CMiniProfilerRow *> &rows );
	void MoveSome( Changes changes );
	void MoveAll( const Changes &changes, const CMiniProfilerModel &model );
	static void DeleteItems( const std::vector<std::unique_ptr<CMiniProfilerGroup>> &groups );
	QItemSelection SelectionOf( const std::vector<CMiniProfilerRow *> &rows ) const;
	bool IsInOrder( const QTreeWidgetItem &parent, bool bAscending ) const;
	void SetSortKeys( const QTreeWidgetItem &parent, size_t nColumn ) const;
	void FitNames();
	int NameWidth( CMiniProfilerRow &row ) const;

	QMenu *m_pContextMenu = nullptr;
	MiniProfilerNumbers m_Numbers;
	bool m_bSortsByKeys = false;
	int m_nLongName = 0;        // pixels that names get at least
	bool m_bUserWidths = false; // a column's width was set by the user
	bool m_bFitting = false;    // and now it is not the user who sets it
};
