// The mini-profiler panel of the Show Budget window: every scope of an engine, grouped, searchable, with its spread.
#pragma once

#include <QColor>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "miniprofiler/miniprofilerbarscale.h"
#include "miniprofiler/miniprofilermodel.h"
#include "miniprofiler/miniprofilertexts.h"

class CQMiniProfilerBarDelegate;
class CQMiniProfilerMenu;
class CQMiniProfilerSearchEdit;
class CQMiniProfilerTreeWidget;
class QAction;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QToolBar;
class QTreeWidgetItem;

class CQMiniProfilerWidget final : public QWidget
{
	Q_OBJECT

public:
	explicit CQMiniProfilerWidget( QWidget *pParent, bool bDark = false );
	~CQMiniProfilerWidget() override;

	// Takes a 'PMPF' payload in. New data shows up with the next regeneration, which is at most 250 ms away (10 ms with
	// "Rapid Update"). True when there was data: the ids that are wanted by now are to be asked for.
	bool ReceiveChunk( std::span<const uint8_t> payload );
	std::vector<uint64_t> TakeWantedIds() { return m_Model.TakeWantedIds(); } // oldest first; none are left

	// Forgets every scope and group. Colours, costs, the pause state and what the user chose stay.
	void Clear();

	// A budget of that name already there gets the new colour.
	void SetBudgetColour( const QString &name, const QColor &colour ) { m_Model.SetBudgetColour( name, colour ); }
	QColor BudgetColour( const QString &name ) const { return m_Model.BudgetColour( name ); } // invalid: unknown

	// What a sample stands for: "frame", as at the start, or "tick".
	void SetInterval( const QString &interval );

	bool IsPaused() const { return m_Model.IsPaused(); }
	const CMiniProfilerModel &Model() const { return m_Model; }

public slots:
	void SetPaused( bool bPaused );
	void RegenerateDataView();
	void OnSearchMiniProfiler( const QString &text );
	void OnTreeSelectionChanged();
	void OnDisplayNumbersChanged();
	void OnHierarchyModeChanged();
	void OnDisambiguateByCaller();
	void OnCopyProfilerAddress();
	void OnClearSelection();
	void OnEnableSorting( bool bOn );
	void OnJumpToParent( QTreeWidgetItem *pItem );

signals:
	void OnPauseStateChanged( bool bPaused );

protected:
	void mousePressEvent( QMouseEvent *pEvent ) override;
	void contextMenuEvent( QContextMenuEvent *pEvent ) override; // the window behind has a menu of its own

private slots:
	void OnPauseToggled( bool bPaused );
	void OnContextMenuRequested( const QPoint &ptTree );
	void OnSearchStep( bool bForward );
	void OnCopyRows();

private:
	void CreateToolBar();
	void CreateTree( bool bDark );
	void CreateControls();
	void CreateLayout();
	void ConnectControls();
	void ConnectMenu();
	MiniProfilerNumbers ReadNumbers() const;
	void UpdateOverhead( const MiniProfilerNumbers &numbers );
	void UpdateScales();

	CMiniProfilerModel m_Model;
	CMiniProfilerBarScale m_BarScale;
	QString m_Interval;
	QTimer m_RegenerationTimer{ this };
	uint64_t m_nDataViewTicks = 0; // of the last regeneration, on this process's counter
	int m_nSearching = 0;          // > 0: the selection changes because of a search

	QToolBar *m_pToolBar = nullptr;
	QAction *m_pPause = nullptr;
	QAction *m_pRapidUpdate = nullptr;
	QAction *m_pRebuildContinuously = nullptr;
	CQMiniProfilerSearchEdit *m_pSearch = nullptr;
	QLabel *m_pSummary = nullptr;
	CQMiniProfilerTreeWidget *m_pTree = nullptr;
	CQMiniProfilerBarDelegate *m_pDelegate = nullptr;
	CQMiniProfilerMenu *m_pMenu = nullptr;
	QComboBox *m_pGroupMode = nullptr;
	QComboBox *m_pLeafMode = nullptr;
	QLabel *m_pOverhead = nullptr;
	QComboBox *m_pUnit = nullptr;
	QCheckBox *m_pShowCur = nullptr;
	QCheckBox *m_pShowAve = nullptr;
	QCheckBox *m_pShowStDev = nullptr;
	QCheckBox *m_pShowPeaks = nullptr;
};
