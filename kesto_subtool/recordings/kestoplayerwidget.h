// The player of profiling recordings.
#pragma once

#include <QPoint>
#include <QWidget>
#include <memory>
#include <vector>

#include "recordings/framefinder.h"
#include "recordings/kestofile.h"
#include "recordings/noderows.h"

class CKestoNodeItem;
class CQFlamegraphWidget;
class KeyValues;
class QAction;
class QLabel;
class QLineEdit;
class QSlider;
class QSplitter;
class QToolBar;
class QTreeWidget;

// Shows one frame of a recording at a time: a tree of its nodes beside a flame graph, with one selection. Left and
// Right step through the frames (with Shift by ten), N and Shift+N go to the next and previous slow frame, M to the
// slowest, F shows a frame's whole width. A file that is dropped on it is opened.
//
// Opening runs events (dialogs, progress). The player may be deleted meanwhile; a second opening is refused.
class CQKestoPlayerWidget final : public QWidget
{
	Q_OBJECT

public:
	explicit CQKestoPlayerWidget( QWidget *pParent );
	~CQKestoPlayerWidget() override;

	// Holds a reference to pFile (not null) and shows its first frame. When the slider stood elsewhere, the views stay
	// empty until it is moved; this is deliberate.
	void SetRecording( CKestoFile *pFile );

	const CKestoFile *GetRecording() const { return m_pFile.Get(); } // null = none
	int GetCurrentTick() const { return m_nCurrentTick; }            // -1 = no frame is shown

	void ShowFrame( int nFrame ); // the nearest that there is
	void ShowSlowestFrame();
	void ShowWholeFrame(); // the flame graph from the frame's beginning to its end

	// The folder of the last opened file (none is not saved), under "recording_directory".
	void LoadSettings( const KeyValues &settings );
	void SaveSettings( KeyValues &settings ) const;

public slots:
	void OnSetTick( int nValue );
	void OnSelectedChanged( int nNodeId, bool bSelected );
	void OnTreeSelectionChanged();
	void OnRecord();
	void OnStop();
	void OnFilterChanged( const QString &text );
	bool OnOpenFile(); // whether a recording was taken
	void OnSaveFile();
	void OnNodeTreeItemClicked( const QPoint &pos );
	void OnItemContextMenu( int nItem, const QPoint &ptGlob );

public:
	// Opens a file without asking for its name; false when no recording was taken.
	Q_INVOKABLE bool OpenRecording( const QString &fileName );

protected:
	bool eventFilter( QObject *pWatched, QEvent *pEvent ) override;
	void keyPressEvent( QKeyEvent *pEvent ) override;
	void dragEnterEvent( QDragEnterEvent *pEvent ) override;
	void dropEvent( QDropEvent *pEvent ) override;

private:
	QToolBar *MakeToolBar();
	QSplitter *MakeViews();
	QWidget *MakeNodes();
	void MakeConnections();
	void FillTree();
	void UpdateNotice();
	void UpdateFrameText();
	void SortByColumn( int nColumn );
	void SortAgain();

	bool HandleKey( const QKeyEvent &event );
	void ShowFoundFrame( int nFrame );
	std::vector<bool> GetSelectedRows() const;
	CKestoNodeItem *GetItemOf( int32_t nNode ) const; // null when the tree has none, as for the root
	QString AskForFile();

	QSlider *m_pTickSlider = nullptr;
	QLabel *m_pFrameText = nullptr;
	CQFlamegraphWidget *m_pFlamegraph = nullptr;
	QTreeWidget *m_pNodeTree = nullptr;
	QLineEdit *m_pFilter = nullptr;
	QLabel *m_pNotice = nullptr;

	std::shared_ptr<const NodeRows> m_pRows;
	std::vector<CKestoNodeItem *> m_NodeItems; // by row; null for the root
	CRefPtr<CKestoFile> m_pFile;
	FrameFinder m_FrameFinder;
	int m_nCurrentTick = -1;
	int m_nSortColumn = -1; // -1 = the order of the file
	Qt::SortOrder m_SortOrder = Qt::AscendingOrder;
	bool m_bOpening = false;
	QString m_Directory;
};
