#include "recordings/kestoplayerwidget.h"

#include <QAction>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSplitter>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "recordings/flamegraphwidget.h"
#include "recordings/kestonodedelegate.h"
#include "recordings/kestonodeitem.h"
#include "recordings/kestotexts.h"

// Widths of the tree's columns at first, in average characters.
static constexpr int NAME_CHARACTERS = 34;
static constexpr int FIGURE_CHARACTERS = 12;

CQKestoPlayerWidget::CQKestoPlayerWidget( QWidget *pParent )
	: QWidget( pParent )
{
	auto *pLayout = new QVBoxLayout( this );
	pLayout->setContentsMargins( 0, 0, 0, 0 );
	pLayout->addWidget( MakeToolBar() );
	pLayout->addWidget( MakeViews(), 1 );
	m_pNotice = new QLabel( this );
	m_pNotice->setAlignment( Qt::AlignCenter );
	m_pNotice->setWordWrap( true );
	m_pNotice->setMargin( 6 );
	pLayout->addWidget( m_pNotice );
	setAcceptDrops( true );
	setFocusPolicy( Qt::ClickFocus );
	MakeConnections();
	UpdateNotice();
}

CQKestoPlayerWidget::~CQKestoPlayerWidget()
{
	// Tree items refer to the recording, which goes before the tree does.
	const QSignalBlocker blocker( m_pNodeTree );
	m_pNodeTree->clear();
	m_pFlamegraph->disconnect( this );
}

QToolBar *CQKestoPlayerWidget::MakeToolBar()
{
	auto *pToolBar = new QToolBar( this );
	const auto addAction = [&]( const char *pIcon, const QString &text, auto slot, bool bEnabled )
	{ pToolBar->addAction( QIcon( QString::fromLatin1( pIcon ) ), text, this, slot )->setEnabled( bEnabled ); };
	// "Capture" is what the tool tips of the first two say, deliberately; the paths have two slashes.
	addAction( "game:tools/images//common/open.png", tr( "Capture" ), &CQKestoPlayerWidget::OnOpenFile, true );
	addAction( "game:tools/images//common/save.png", tr( "Capture" ), &CQKestoPlayerWidget::OnSaveFile, false );
	pToolBar->addSeparator();
	addAction( "game:tools/images//common/control_record.png", tr( "Capture" ), &CQKestoPlayerWidget::OnRecord, false );
	addAction(
		"game:tools/images//common/control_stop.png", tr( "Stop Capture" ), &CQKestoPlayerWidget::OnStop, false );
	pToolBar->addSeparator();
	m_pTickSlider = new QSlider( Qt::Horizontal, pToolBar );
	m_pTickSlider->setRange( 0, 0 );
	m_pTickSlider->setEnabled( false );
	pToolBar->addWidget( m_pTickSlider );
	m_pFrameText = new QLabel( pToolBar );
	m_pFrameText->setMargin( 4 );
	m_pFrameText->setToolTip( tr( "Left, Right: previous, next frame (Shift: ten)\n"
								  "N, Shift+N: next, previous frame that takes more than twice the median\n"
								  "M: slowest frame\n"
								  "F: whole width of the frame" ) );
	pToolBar->addWidget( m_pFrameText );
	return pToolBar;
}

QSplitter *CQKestoPlayerWidget::MakeViews()
{
	auto *pSplitter = new QSplitter( this );
	pSplitter->addWidget( MakeNodes() );
	auto *pFlames = new QGroupBox( tr( "Flamegraph" ) );
	auto *pFlamesLayout = new QVBoxLayout( pFlames );
	m_pFlamegraph = new CQFlamegraphWidget( pFlames );
	pFlamesLayout->addWidget( m_pFlamegraph );
	pSplitter->addWidget( pFlames );
	pSplitter->setStretchFactor( 1, 1 );
	const int nTreeWidth = ( NAME_CHARACTERS + 3 * FIGURE_CHARACTERS + 8 ) * fontMetrics().averageCharWidth();
	pSplitter->setSizes( { nTreeWidth, 2 * nTreeWidth } );
	return pSplitter;
}

QWidget *CQKestoPlayerWidget::MakeNodes()
{
	const int nCharacter = fontMetrics().averageCharWidth();
	auto *pNodes = new QGroupBox( tr( "Kesto Nodes" ) );
	auto *pNodesLayout = new QVBoxLayout( pNodes );
	m_pFilter = new QLineEdit( pNodes );
	m_pFilter->setAcceptDrops( false ); // files are dropped on the player
	m_pFilter->setPlaceholderText( tr( "Select nodes by name (* and ? match anything)" ) );
	m_pNodeTree = new QTreeWidget( pNodes );
	m_pNodeTree->setItemDelegate( new CQKestoNodeDelegate( m_pNodeTree ) );
	// Of the columns that are made from here on.
	m_pNodeTree->header()->setDefaultSectionSize( FIGURE_CHARACTERS * nCharacter );
	m_pNodeTree->setHeaderLabels( { tr( "Name" ), tr( "Inclusive" ), tr( "Exclusive" ), tr( "Calls" ) } );
	for ( int i = CKestoNodeItem::COLUMN_INCLUSIVE; i < CKestoNodeItem::COLUMN_COUNT; i++ )
		m_pNodeTree->headerItem()->setTextAlignment( i, Qt::AlignRight | Qt::AlignVCenter );
	m_pNodeTree->setSelectionMode( QAbstractItemView::ExtendedSelection );
	m_pNodeTree->setContextMenuPolicy( Qt::CustomContextMenu );
	m_pNodeTree->setUniformRowHeights( true );
	m_pNodeTree->header()->setSectionsClickable( true );
	m_pNodeTree->header()->resizeSection( CKestoNodeItem::COLUMN_NAME, NAME_CHARACTERS * nCharacter );
	pNodesLayout->addWidget( m_pFilter );
	pNodesLayout->addWidget( m_pNodeTree );
	return pNodes;
}

void CQKestoPlayerWidget::MakeConnections()
{
	connect( m_pNodeTree, SIGNAL( itemSelectionChanged() ), this, SLOT( OnTreeSelectionChanged() ) );
	connect(
		m_pNodeTree, SIGNAL( customContextMenuRequested( QPoint ) ), this, SLOT( OnNodeTreeItemClicked( QPoint ) ) );
	connect(
		m_pFlamegraph, SIGNAL( OnItemSelectedChanged( int, bool ) ), this, SLOT( OnSelectedChanged( int, bool ) ) );
	connect(
		m_pFlamegraph, SIGNAL( OnItemContextMenu( int, QPoint ) ), this, SLOT( OnItemContextMenu( int, QPoint ) ) );
	connect( m_pTickSlider, SIGNAL( valueChanged( int ) ), this, SLOT( OnSetTick( int ) ) );
	connect( m_pFilter, SIGNAL( textChanged( QString ) ), this, SLOT( OnFilterChanged( QString ) ) );
	connect( m_pNodeTree->header(), &QHeaderView::sectionClicked, this, &CQKestoPlayerWidget::SortByColumn );
	// Their own meaning of the keys that step through the frames is of no use here.
	for ( QWidget *pWidget : { static_cast<QWidget *>( m_pNodeTree ), static_cast<QWidget *>( m_pFlamegraph ),
			  static_cast<QWidget *>( m_pTickSlider ) } )
		pWidget->installEventFilter( this );
}

// The order of these steps is deliberate. When the slider stood elsewhere, moving it to 0 shows the tick 0 at once,
// against views that are still empty; they then stay empty until it is moved.
void CQKestoPlayerWidget::SetRecording( CKestoFile *pFile )
{
	m_NodeItems.clear();
	m_pRows = nullptr;
	{
		const QSignalBlocker blocker( m_pNodeTree );
		m_pNodeTree->clear(); // its items refer to the old recording
	}
	m_pFlamegraph->Clear();
	m_pFile = CRefPtr( pFile );
	m_FrameFinder = FrameFinder( *pFile );
	m_nSortColumn = -1;
	m_pNodeTree->header()->setSortIndicatorShown( false );
	m_nCurrentTick = -1;
	m_pTickSlider->setValue( 0 );
	if ( pFile->GetFrameCount() == 0 )
		m_pTickSlider->setEnabled( false );
	else
	{
		m_pTickSlider->setMaximum( pFile->GetFrameCount() - 1 );
		m_pTickSlider->setEnabled( true );
		m_pRows = std::make_shared<const NodeRows>( *pFile );
		FillTree();
		m_pFlamegraph->SetRecording( pFile, m_pRows );
		OnSetTick( 0 );
	}
	UpdateNotice();
	UpdateFrameText();
}

void CQKestoPlayerWidget::FillTree()
{
	m_NodeItems.assign( static_cast<size_t>( m_pRows->Count() ), nullptr );
	QList<QTreeWidgetItem *> topLevel;
	for ( int32_t i = 1; i < m_pRows->Count(); i++ )
	{
		const NodeRow &row = ( *m_pRows )[i];
		auto *pItem = new CKestoNodeItem( *m_pFile, row.m_nNode, i );
		m_NodeItems[static_cast<size_t>( i )] = pItem;
		if ( row.m_nParentRow == 0 )
			topLevel.push_back( pItem );
		else
			m_NodeItems[static_cast<size_t>( row.m_nParentRow )]->addChild( pItem );
	}
	m_pNodeTree->addTopLevelItems( topLevel );
}

void CQKestoPlayerWidget::UpdateNotice()
{
	QString text;
	if ( !m_pFile )
		text =
			tr( "No recording is open yet. Open a .kesto file with the first button, or drop one here.\n"
				"An engine writes one with SHOWBUDGET_RECORD=FILE.kesto in its environment, or on \"record start\" in "
				"the console.\n"
				"\"kesto convert\" makes one of another tool's trace." );
	else if ( m_pFile->GetFrameCount() == 0 )
		text = tr( "The recording has no frames." );
	else if ( m_pRows->GetLeftOutCount() > 0 )
		text = tr( "%1 nodes not shown" ).arg( m_pRows->GetLeftOutCount() );
	m_pNotice->setText( text );
	m_pNotice->setVisible( !text.isEmpty() );
}

void CQKestoPlayerWidget::UpdateFrameText()
{
	const CKestoFile::CTickTimings *pFrame = m_pFile ? m_pFile->GetFrame( m_nCurrentTick ) : nullptr;
	if ( !pFrame )
		return m_pFrameText->clear();
	const auto nTime = static_cast<int32_t>( pFrame->PeekEntry( m_pFile->GetRootNode() ).m_nTime );
	m_pFrameText->setText( tr( "Frame %1 of %2: %3 ms" )
							   .arg( m_nCurrentTick )
							   .arg( m_pFile->GetFrameCount() )
							   .arg( FormatMilliseconds( nTime ) ) );
	// Never narrower than it was: the slider beside it must not move under the mouse.
	m_pFrameText->setMinimumWidth( std::max( m_pFrameText->minimumWidth(), m_pFrameText->sizeHint().width() ) );
}

void CQKestoPlayerWidget::OnSetTick( int nValue )
{
	if ( nValue == m_nCurrentTick || nValue < 0 || !m_pFile || nValue >= m_pFile->GetFrameCount() )
		return;
	CKestoFile::CTickTimings &frame = *m_pFile->GetFrame( nValue );
	m_pFlamegraph->SetFrame( &frame );
	CChildTimes childTimes( *m_pFile, frame );
	for ( CKestoNodeItem *pItem : m_NodeItems )
		if ( pItem )
			pItem->SetFrame( frame, childTimes );
	m_nCurrentTick = nValue;
	m_pTickSlider->setToolTip( QString::number( nValue ) );
	if ( m_nSortColumn != CKestoNodeItem::COLUMN_NAME ) // names are the same in every frame
		SortAgain();
	m_pNodeTree->viewport()->update();
	UpdateFrameText();
}

// The first click on figures shows the largest first.
void CQKestoPlayerWidget::SortByColumn( int nColumn )
{
	if ( nColumn == m_nSortColumn )
		m_SortOrder = m_SortOrder == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
	else
		m_SortOrder = nColumn == CKestoNodeItem::COLUMN_NAME ? Qt::AscendingOrder : Qt::DescendingOrder;
	m_nSortColumn = nColumn;
	m_pNodeTree->header()->setSortIndicatorShown( true );
	m_pNodeTree->header()->setSortIndicator( nColumn, m_SortOrder ); // which the header may have turned around
	SortAgain();
}

void CQKestoPlayerWidget::SortAgain()
{
	if ( m_nSortColumn >= 0 )
		m_pNodeTree->sortItems( m_nSortColumn, m_SortOrder );
}

void CQKestoPlayerWidget::OnRecord() {}

void CQKestoPlayerWidget::OnStop() {}

void CQKestoPlayerWidget::OnSaveFile() {}
