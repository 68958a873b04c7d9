// The lower panel of the Show Budget window: history columns, frame-rate graph and the history cursor.
#pragma once

#include <QPointer>
#include <QWidget>
#include <cstdint>

#include "views/historycolumns.h"
#include "views/ibudgetviewowner.h"

class CQBudgetHistoryBarsWidget;
class CQFPSGraphWidget;
class KeyValues;
class QHelpEvent;
class QKeyEvent;
class QLabel;
class QScrollBar;
class QSplitter;
struct HistoryCommand;
struct HistoryPictureKey;
struct HistoryView;

class CQBudgetHistoryWidget : public QWidget
{
	Q_OBJECT

public:
	// The owner outlives the widget. Its status bar takes the cursor's label over.
	CQBudgetHistoryWidget( IBudgetViewOwner &owner, QWidget *pParent );

	QSize sizeHint() const override;

	// On while sampling is stopped: the cursor goes to the newest sample and its label shows; off hides the label.
	void SetCursorMode( bool bOn );
	bool IsCursorMode() const { return m_bCursorMode; }

	uint32_t Cursor() const { return m_nCursor; } // a sample number, not a slot; 0 without samples

	// The samples were cleared: scroll range, position and cursor label follow the counter, which is 0.
	void OnSamplesCleared();

	void SaveSettings( KeyValues &settings ) const;

	// Moves the cursor or starts and stops sampling when that is what the key is for; true when it was. The window
	// hands on the keys that none of its widgets took.
	bool HandleKey( const QKeyEvent &event );

	// For the two views.
	const HistoryMeasures &Measures() const { return m_Measures; }
	HistoryView MakeView( const QWidget &view, int nZoomStep ) const;
	HistoryPictureKey MakePictureKey( const HistoryView &view ) const; // without what only one of them shows
	void PressColumn( int x ); // selects the sample under x and follows the mouse from then on
	void DragColumn( int x );
	void ReleaseColumn();
	void ShowToolTip( QWidget &view, const QHelpEvent &event );
	void OnViewResized(); // the number of visible columns may have changed

protected:
	void keyPressEvent( QKeyEvent *pEvent ) override;
	void resizeEvent( QResizeEvent *pEvent ) override;

private slots:
	void OnValueChanged();

private:
	int VisibleColumns() const;
	HistoryColumns Columns() const;
	void UpdateScrollBar();
	void UpdateCursorLabel();
	void Pick( int x );
	void MoveCursor( uint32_t nSample );

	// Brings a cursor that is off the screen to its near edge or, with bCentre, to its middle. True when it scrolled.
	bool ScrollToCursor( bool bCentre );
	void RunCommand( const HistoryCommand &command );
	std::optional<uint32_t> TargetOf( const HistoryCommand &command ) const;

	IBudgetViewOwner &m_Owner;
	HistoryMeasures m_Measures;
	QSplitter *m_pSplitter;
	QScrollBar *m_pScrollBar;
	CQBudgetHistoryBarsWidget *m_pBars;
	CQFPSGraphWidget *m_pGraph;
	QPointer<QLabel> m_pCursorLabel; // belongs to the status bar, which may end first

	uint32_t m_nCursor = 0;
	uint32_t m_nScrollBase = 0; // of the scroll bar's range
	int m_nScrolledColumns = 0; // visible columns when the scroll bar was updated
	bool m_bCursorMode = false;
	bool m_bDragging = false;
};
