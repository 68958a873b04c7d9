// Draws one frame of a recording as a flame graph.
#pragma once

#include <QGraphicsView>
#include <memory>
#include <vector>

#include "recordings/flamelayout.h"
#include "recordings/kestofile.h"
#include "recordings/noderows.h"

class CQFlamegraphGraphicsScene;
class CQFlamegraphRowItem;
class CQFlamegraphScaleItem;

// One bar per row of the recording's nodes, the root at the bottom. The wheel zooms the time around the mouse, with
// Ctrl the row height; the middle button pans; clicking selects.
class CQFlamegraphWidget final : public QGraphicsView
{
	Q_OBJECT

public:
	explicit CQFlamegraphWidget( QWidget *pParent = nullptr );
	~CQFlamegraphWidget() override;

	// Without a recording; scales and the scale item as at the beginning.
	void Clear();

	// Holds a reference to pFile (not null). pRows are its rows. Nothing is drawn before a frame is set.
	void SetRecording( CKestoFile *pFile, std::shared_ptr<const NodeRows> pRows );

	// Holds a reference to pFrame, a frame of the recording.
	void SetFrame( CKestoFile::CTickTimings *pFrame );

	// Zooms the time so that the frame is as wide as the view. Nothing for a frame without time.
	void ShowWholeFrame();

	// Selects the node's bars or the contrary, without reporting it. A node without bars is ignored, as is the call
	// while a selection is being reported.
	void SetSelected( int32_t nNode, bool bSelected );

	int32_t GetSelectedNode() const { return m_nSelectedNode; } // the last one that was selected; -1 = none
	const FlameMap &GetMap() const { return m_Map; }
	QString GetNodeText( int32_t nNode ) const;
	const std::vector<CQFlamegraphRowItem *> &GetRowItems() const { return m_RowItems; } // in the order of the rows
	const CQFlamegraphScaleItem &GetScaleItem() const { return *m_pScaleItem; }

	// From the items.
	void ReportSelection( int32_t nNode, bool bSelected );
	void ReportContextMenu( int32_t nNode, const QPoint &ptGlobal );

signals:
	void OnItemSelectedChanged( int nNodeId, bool bSelected );
	void OnItemContextMenu( int nNodeId, const QPoint &ptGlobal );

protected:
	void wheelEvent( QWheelEvent *pEvent ) override;

private:
	void Relayout();
	void LayoutRecording();
	void ScrollToBeginning();
	bool Zoom( float flFactor, bool bRowHeight );
	CQFlamegraphRowItem *GetItemOf( int32_t nNode ) const;
	QPointF GetViewCentre() const;

	CQFlamegraphGraphicsScene *m_pScene;
	CQFlamegraphScaleItem *m_pScaleItem;
	std::shared_ptr<const NodeRows> m_pRows;
	std::vector<CQFlamegraphRowItem *> m_RowItems; // by row
	std::vector<FlameBar> m_Bars;
	CRefPtr<CKestoFile> m_pFile;
	CRefPtr<CKestoFile::CTickTimings> m_pFrame;
	FlameMap m_Map;
	int m_nReporting = 0; // not 0 while a selection is reported or applied
	int32_t m_nSelectedNode = -1;
};
