// The mini-profiler panel: what it does. What it is made of is in miniprofilerwidgetsetup.cpp.
#include "miniprofiler/miniprofilerwidget.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMouseEvent>
#include <algorithm>

#include "keel0/platform.h"
#include "miniprofiler/miniprofilerbardelegate.h"
#include "miniprofiler/miniprofilerdecoder.h"
#include "miniprofiler/miniprofilermenu.h"
#include "miniprofiler/miniprofilerrowitem.h"
#include "miniprofiler/miniprofilersearch.h"
#include "miniprofiler/miniprofilersearchedit.h"
#include "miniprofiler/miniprofilertreewidget.h"

// The tree's items know rows, so they go first.
CQMiniProfilerWidget::~CQMiniProfilerWidget()
{
	delete m_pTree;
}

bool CQMiniProfilerWidget::ReceiveChunk( std::span<const uint8_t> payload )
{
	constexpr int RAPID_UPDATE_MILLISECONDS = 10;
	constexpr int UPDATE_MILLISECONDS = 250;
	const bool bData = DecodeMiniProfilerChunk( payload, m_Model );
	m_pTree->Follow( m_Model );
	if ( bData && !m_RegenerationTimer.isActive() )
		m_RegenerationTimer.start( m_pRapidUpdate->isChecked() ? RAPID_UPDATE_MILLISECONDS : UPDATE_MILLISECONDS );
	return bData;
}

void CQMiniProfilerWidget::Clear()
{
	m_pTree->clear();
	m_Model.Clear();
	m_BarScale.Reset();
	m_pSummary->clear();
}

void CQMiniProfilerWidget::SetInterval( const QString &interval )
{
	m_Interval = interval;
	m_pMenu->SetInterval( interval );
}

void CQMiniProfilerWidget::SetPaused( bool bPaused )
{
	m_pPause->setChecked( bPaused );
}

void CQMiniProfilerWidget::OnPauseToggled( bool bPaused )
{
	m_Model.SetPaused( bPaused );
	emit OnPauseStateChanged( bPaused );
}

// -- Regeneration

MiniProfilerNumbers CQMiniProfilerWidget::ReadNumbers() const
{
	MiniProfilerNumbers numbers;
	numbers.m_Unit = MiniProfilerUnits()[static_cast<size_t>( std::max( m_pUnit->currentIndex(), 0 ) )];
	numbers.m_flFactor = numbers.m_Unit.Factor( m_Model.TickFrequency() );
	numbers.m_bCur = m_pShowCur->isChecked();
	numbers.m_bAve = m_pShowAve->isChecked();
	numbers.m_bStDev = m_pShowStDev->isChecked();
	numbers.m_bPeaks = m_pShowPeaks->isChecked();
	return numbers;
}

void CQMiniProfilerWidget::RegenerateDataView()
{
	const uint64_t nStart = Plat_CPUTicks();
	m_pTree->setUpdatesEnabled( false );
	const MiniProfilerNumbers numbers = ReadNumbers();
	m_pDelegate->SetNumbers( numbers );
	m_pTree->SetNumbers( numbers );
	m_pTree->SetHeaderTexts( MiniProfilerHeaderLabels( numbers.m_Unit.m_Unit, m_Interval ) );

	m_Model.ComputeStatistics( numbers.m_bPeaks || m_pDelegate->Display().m_bDrawPeaks );
	UpdateOverhead( numbers );
	if ( m_pRebuildContinuously->isChecked() )
		m_Model.RebuildHierarchy();
	m_pTree->Follow( m_Model );
	m_pTree->RestoreOrder();
	UpdateScales();
	m_pTree->setUpdatesEnabled( true );
	m_nDataViewTicks = Plat_CPUTicks() - nStart;
}

void CQMiniProfilerWidget::UpdateOverhead( const MiniProfilerNumbers &numbers )
{
	if ( m_Model.CostHistory().Count() == 0 )
		return;
	const MiniProfilerOverhead overhead{ m_Model.CostHistory(), m_Model.Counters(),
		m_Model.CostRecord().m_Ave[MINIPROFILER_INCLUSIVE], m_nDataViewTicks, m_pDelegate->TakePaintTicks(),
		m_Model.IgnoredIds() };
	m_pOverhead->setText( MiniProfilerOverheadText( overhead, numbers ) );
	m_pOverhead->setToolTip( MiniProfilerOverheadToolTip( overhead, numbers ) );
}

// Bars are scaled to the selected rows when that is wanted, else to the visible ones, else to all.
void CQMiniProfilerWidget::UpdateScales()
{
	if ( m_nSearching > 0 )
		return;
	m_BarScale.Decay();
	std::vector<CMiniProfilerRow *> rows;
	if ( m_pMenu->IsNormalising() )
		rows = m_pTree->SelectedRows();
	const auto nNormalised = static_cast<int>( rows.size() );
	if ( rows.empty() )
		rows = m_pTree->VisibleRows();

	if ( rows.empty() )
	{
		m_pSummary->clear();
		for ( const auto &pRecord : m_Model.Records() )
			m_BarScale.Include( *pRecord );
	}
	else
	{
		CMiniProfilerGroup sum( QString(), nullptr, 0 );
		for ( const CMiniProfilerRow *pRow : rows )
		{
			m_BarScale.Include( *pRow );
			sum.Merge( *pRow );
		}
		m_pSummary->setText( MiniProfilerSummaryText( sum, m_pDelegate->Display().m_Numbers, m_Interval ) );
	}
	m_pDelegate->SetBarScale( m_BarScale.Maxima(), nNormalised );
	m_pTree->viewport()->update();
}

void CQMiniProfilerWidget::OnTreeSelectionChanged()
{
	UpdateScales();
}

void CQMiniProfilerWidget::OnDisplayNumbersChanged()
{
	RegenerateDataView();
}

void CQMiniProfilerWidget::OnHierarchyModeChanged()
{
	m_Model.SetHierarchy( MiniProfilerGroupModeOf( m_pGroupMode->currentData().toInt() ),
		MiniProfilerLeafModeOf( m_pLeafMode->currentData().toInt() ) );
	m_pTree->Follow( m_Model );
	m_BarScale.Reset();
	RegenerateDataView();
}

// -- What the user does with rows

void CQMiniProfilerWidget::OnSearchMiniProfiler( const QString &text )
{
	if ( text.isEmpty() )
		return;
	m_nSearching++;
	m_pTree->SelectRows( FindMiniProfilerRows( m_pTree->RowsInOrder(), text ) );
	m_nSearching--;
	UpdateScales();
}

void CQMiniProfilerWidget::OnSearchStep( bool bForward )
{
	if ( m_pSearch->text().isEmpty() )
		return;
	const auto rows = FindMiniProfilerRows( m_pTree->RowsInOrder(), m_pSearch->text() );
	if ( rows.empty() )
		return;
	const CMiniProfilerRow *pCurrent = m_pTree->currentItem() ? &RowOf( *m_pTree->currentItem() ) : nullptr;
	const auto nRows = static_cast<ptrdiff_t>( rows.size() );
	const ptrdiff_t nCurrent = std::find( rows.begin(), rows.end(), pCurrent ) - rows.begin();
	ptrdiff_t nNext = bForward ? 0 : nRows - 1;
	if ( nCurrent < nRows )
		nNext = ( nCurrent + ( bForward ? 1 : nRows - 1 ) ) % nRows;
	m_pTree->setCurrentItem( rows[static_cast<size_t>( nNext )]->m_pItem );
	m_pTree->scrollToItem( m_pTree->currentItem() );
}

void CQMiniProfilerWidget::OnCopyRows()
{
	QString text;
	for ( const CMiniProfilerRow *pRow : m_pTree->SelectedRows() )
		text += MiniProfilerRowText( *pRow, m_pDelegate->Display().m_Numbers ) + '\n';
	Plat_SetClipboardText( text.toUtf8().constData() );
}

void CQMiniProfilerWidget::OnCopyProfilerAddress()
{
	QString text;
	for ( const CMiniProfilerRow *pRow : m_pTree->SelectedRows() )
		if ( const CQMiniProfilerRecord *pRecord = AsRecord( pRow ) )
			text += QString::asprintf( "0x%llX\n", static_cast<unsigned long long>( pRecord->Id() ) );
	Plat_SetClipboardText( text.toUtf8().constData() );
}

void CQMiniProfilerWidget::OnClearSelection()
{
	m_pTree->clearSelection();
}

void CQMiniProfilerWidget::OnDisambiguateByCaller()
{
	for ( CMiniProfilerRow *pRow : m_pTree->SelectedRows() )
		if ( AsRecord( pRow ) )
			pRow->SetFlag( MINIPROFILER_ROW_DISAMBIGUATE );
	m_pTree->viewport()->update();
}

void CQMiniProfilerWidget::OnEnableSorting( bool bOn )
{
	m_pTree->setSortingEnabled( bOn );
}

void CQMiniProfilerWidget::OnJumpToParent( QTreeWidgetItem *pItem )
{
	const CQMiniProfilerRecord *pRecord = pItem ? AsRecord( &RowOf( *pItem ) ) : nullptr;
	if ( !pRecord )
		return;
	const CQMiniProfilerRecord *pParent = pRecord->m_pCaller ? pRecord->m_pCaller : pRecord->m_pStaticParent;
	if ( !pParent )
		return;
	m_pTree->setCurrentItem( pParent->m_pItem );
	m_pTree->scrollToItem( m_pTree->currentItem() ); // none when somebody who heard of it cleared the tree
}

void CQMiniProfilerWidget::mousePressEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() == Qt::RightButton )
		m_pTree->OpenContextMenu( pEvent->globalPos() );
	else
		QWidget::mousePressEvent( pEvent );
}

void CQMiniProfilerWidget::contextMenuEvent( QContextMenuEvent *pEvent )
{
	m_pTree->OpenContextMenu( pEvent->globalPos() );
	pEvent->accept();
}

void CQMiniProfilerWidget::OnContextMenuRequested( const QPoint &ptTree )
{
	m_pTree->OpenContextMenu( m_pTree->viewport()->mapToGlobal( ptTree ) );
}
