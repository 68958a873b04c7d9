#include "recordings/flamegraphwidget.h"

#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "keel0/mathlib.h"
#include "recordings/flamegraphrowitem.h"
#include "recordings/flamegraphscaleitem.h"
#include "recordings/flamegraphscene.h"
#include "recordings/kestotexts.h"

static const QColor FILL_COLOURS[4] = { { 255, 200, 200 }, { 255, 255, 200 }, { 240, 210, 215 }, { 245, 240, 215 } };

CQFlamegraphWidget::CQFlamegraphWidget( QWidget *pParent )
	: QGraphicsView( pParent )
	, m_pScene( new CQFlamegraphGraphicsScene( *this ) )
	, m_pScaleItem( new CQFlamegraphScaleItem( *this ) )
{
	m_pScene->addItem( m_pScaleItem );
	setScene( m_pScene );
	setRubberBandSelectionMode( Qt::IntersectsItemBoundingRect );
	setAcceptDrops( false ); // files are dropped on the player
}

CQFlamegraphWidget::~CQFlamegraphWidget()
{
	// Items report to this widget, so they go first, and silently.
	m_nReporting++;
	delete m_pScene;
}

void CQFlamegraphWidget::Clear()
{
	m_nReporting++; // deselected items have nothing to say any more
	for ( CQFlamegraphRowItem *pItem : m_RowItems )
		delete pItem;
	m_nReporting--;
	m_RowItems.clear();
	m_pRows = nullptr;
	m_pFrame = {};
	m_pFile = {};
	m_pScaleItem->Reset();
	m_Map = {};
	m_nSelectedNode = -1;
}

void CQFlamegraphWidget::SetRecording( CKestoFile *pFile, std::shared_ptr<const NodeRows> pRows )
{
	Clear();
	m_pFile = CRefPtr( pFile );
	m_pRows = std::move( pRows );
	m_RowItems.reserve( static_cast<size_t>( m_pRows->Count() ) );
	for ( int32_t i = 0; i < m_pRows->Count(); i++ )
	{
		const NodeRow &row = ( *m_pRows )[i];
		m_RowItems.push_back( new CQFlamegraphRowItem( *this, row.m_nNode, FILL_COLOURS[FlameColourIndex( row )] ) );
		m_pScene->addItem( m_RowItems.back() );
	}
}

void CQFlamegraphWidget::SetFrame( CKestoFile::CTickTimings *pFrame )
{
	if ( pFrame == m_pFrame.Get() )
		return;
	const bool bFirst = !m_pFrame;
	m_pFrame = CRefPtr( pFrame );
	Relayout();
	if ( bFirst ) // and not somewhere in the middle of the frame
		ScrollToBeginning();
}

void CQFlamegraphWidget::ScrollToBeginning()
{
	horizontalScrollBar()->setValue( horizontalScrollBar()->minimum() );
	verticalScrollBar()->setValue( verticalScrollBar()->maximum() );
}

void CQFlamegraphWidget::ShowWholeFrame()
{
	constexpr int FREE_PIXELS = 4; // beside the frame
	const int32_t nWidth = m_RowItems.empty() ? 0 : m_RowItems[0]->GetBar().m_nWidth;
	if ( nWidth <= 0 )
		return;
	const auto flPixels = static_cast<float>( std::max( viewport()->width() - FREE_PIXELS, 1 ) );
	if ( !Zoom( flPixels / ( static_cast<float>( nWidth ) * m_Map.m_flXScale ), false ) )
		return;
	Relayout();
	ScrollToBeginning();
}

QString CQFlamegraphWidget::GetNodeText( int32_t nNode ) const
{
	return m_pFile ? NodeNameText( *m_pFile, nNode ) : QString();
}

CQFlamegraphRowItem *CQFlamegraphWidget::GetItemOf( int32_t nNode ) const
{
	const int32_t nRow = m_pRows ? m_pRows->RowOf( nNode ) : -1;
	return nRow < 0 ? nullptr : m_RowItems[static_cast<size_t>( nRow )];
}

QPointF CQFlamegraphWidget::GetViewCentre() const
{
	return mapToScene( viewport()->rect().center() );
}

void CQFlamegraphWidget::Relayout()
{
	if ( !m_pFrame )
		return;
	const CQFlamegraphRowItem *pSelected = GetItemOf( m_nSelectedNode );
	const QPointF ptOffset = pSelected ? pSelected->boundingRect().center() - GetViewCentre() : QPointF();
	if ( m_pFile )
	{
		LayoutRecording();
		m_pScene->setSceneRect( m_pScene->itemsBoundingRect() );
		if ( pSelected )
			centerOn( pSelected->boundingRect().center() - ptOffset );
	}
	else
		m_pScaleItem->SetDefault();
	viewport()->update();
}

void CQFlamegraphWidget::LayoutRecording()
{
	LayoutFlameGraph( m_Bars, *m_pRows, *m_pFrame );
	for ( int32_t i = 0; i < m_pRows->Count(); i++ )
		m_RowItems[static_cast<size_t>( i )]->SetBar( m_Bars[static_cast<size_t>( i )], ( *m_pRows )[i].m_nDepth );
	m_pScaleItem->SetFrameTime( m_Bars.empty() ? 0 : m_Bars[0].m_nWidth );
}

void CQFlamegraphWidget::SetSelected( int32_t nNode, bool bSelected )
{
	if ( m_nReporting != 0 )
		return;
	for ( int32_t nRow = m_pRows ? m_pRows->RowOf( nNode ) : -1; nRow >= 0;
		  nRow = ( *m_pRows )[nRow].m_nEarlierRowOfNode )
	{
		CQFlamegraphRowItem *pItem = m_RowItems[static_cast<size_t>( nRow )];
		if ( pItem->isSelected() == bSelected )
			continue;
		m_nReporting++;
		pItem->setSelected( bSelected );
		if ( bSelected )
			m_nSelectedNode = nNode;
		m_nReporting--;
	}
}

void CQFlamegraphWidget::ReportSelection( int32_t nNode, bool bSelected )
{
	if ( m_nReporting != 0 )
		return;
	if ( bSelected )
		m_nSelectedNode = nNode;
	m_nReporting = 1;
	emit OnItemSelectedChanged( nNode, bSelected );
	m_nReporting--;
}

void CQFlamegraphWidget::ReportContextMenu( int32_t nNode, const QPoint &ptGlobal )
{
	emit OnItemContextMenu( nNode, ptGlobal );
}

void CQFlamegraphWidget::wheelEvent( QWheelEvent *pEvent )
{
	QGraphicsView::wheelEvent( pEvent );
	const float flFactor = V_expf( static_cast<float>( pEvent->angleDelta().y() ) * 0.005f );
	const QPointF ptMouse = mapToScene( pEvent->position().toPoint() );
	const QPointF ptOffset = ptMouse - GetViewCentre();
	const float flTime = m_Map.TimeAt( static_cast<float>( ptMouse.x() ) );
	const float flRow = m_Map.RowAt( static_cast<float>( ptMouse.y() ) );
	if ( Zoom( flFactor, pEvent->modifiers() & Qt::ControlModifier ) )
	{
		Relayout();
		centerOn( QPointF( m_Map.X( flTime ), m_Map.Y( flRow ) ) - ptOffset );
	}
	pEvent->accept();
}

// There are no bounds but those of the numbers: a step that would leave them is not made.
bool CQFlamegraphWidget::Zoom( float flFactor, bool bRowHeight )
{
	float &flScale = bRowHeight ? m_Map.m_flRowHeight : m_Map.m_flXScale;
	const float flZoomed = flScale * flFactor;
	if ( !std::isnormal( flZoomed ) || !std::isfinite( flZoomed * 4e9f ) )
		return false;
	for ( CQFlamegraphRowItem *pItem : m_RowItems )
		pItem->NotifyScaleChange();
	m_pScaleItem->NotifyScaleChange();
	flScale = flZoomed;
	return true;
}
