// The mini-profiler panel: what it is made of, and what is connected to what.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QShortcut>
#include <QToolBar>
#include <QVBoxLayout>

#include "keel0/platform.h"
#include "miniprofiler/miniprofilerbardelegate.h"
#include "miniprofiler/miniprofilermenu.h"
#include "miniprofiler/miniprofilersearchedit.h"
#include "miniprofiler/miniprofilertreewidget.h"
#include "miniprofiler/miniprofilerwidget.h"

namespace
{
constexpr int SEARCH_CHARACTERS = 40;
constexpr int OVERHEAD_LINES = 3;

// A text that changes several times a second must not move what stands beside it, nor widen the window.
void GiveTheRest( QLabel &label )
{
	label.setSizePolicy( QSizePolicy::Expanding, QSizePolicy::Preferred );
	label.setMinimumWidth( 1 ); // and not its text's
}
} // namespace

CQMiniProfilerWidget::CQMiniProfilerWidget( QWidget *pParent, bool bDark )
	: QWidget( pParent )
	, m_Model( Plat_CPUTickFrequency() )
	, m_Interval( QStringLiteral( "frame" ) )
{
	// Not a literal: the toolkit's font cache keeps the name, also when the module has left the process.
	setFont( QFont( QString::fromLatin1( "Arial" ), 9, QFont::Normal ) );
	m_RegenerationTimer.setSingleShot( true );
	m_RegenerationTimer.setObjectName( QStringLiteral( "RegenerationTimer" ) );
	CreateToolBar();
	CreateTree( bDark );
	CreateControls();
	CreateLayout();
	ConnectControls();
	ConnectMenu();
	RegenerateDataView(); // so that there are columns before there is data
	m_pTree->SetStartWidths( MiniProfilerHeaderLabels( MiniProfilerUnits().back().m_Unit, m_Interval ) ); // the longest
}

void CQMiniProfilerWidget::CreateToolBar()
{
	m_pToolBar = new QToolBar( this );
	const auto Add = [this]( const QString &text, const char *pIcon )
	{
		QAction *pAction = m_pToolBar->addAction( QIcon( QString::fromLatin1( pIcon ) ), text );
		pAction->setCheckable( true );
		return pAction;
	};
	m_pPause = Add( tr( "Pause Collection" ), "game:tools/images/common/control_pause.png" );
	m_pRapidUpdate = Add( tr( "Rapid Update" ), "game:tools/images/common/control_ff.png" );
	m_pRebuildContinuously =
		Add( tr( "Rebuild Hierarchy Continuously" ), "game:tools/images/common/repeat_multiple.png" );
	const int nCharacter = fontMetrics().horizontalAdvance( 'x' );
	m_pSearch = new CQMiniProfilerSearchEdit( m_pToolBar );
	m_pSearch->setFixedWidth( SEARCH_CHARACTERS * nCharacter );
	m_pToolBar->addWidget( m_pSearch );
	m_pSummary = new QLabel( m_pToolBar );
	m_pSummary->setMargin( nCharacter );
	GiveTheRest( *m_pSummary );
	m_pToolBar->addWidget( m_pSummary );
}

void CQMiniProfilerWidget::CreateTree( bool bDark )
{
	m_pTree = new CQMiniProfilerTreeWidget( this );
	m_pDelegate = new CQMiniProfilerBarDelegate( bDark, this );
	m_pTree->setItemDelegate( m_pDelegate );
	QPalette palette = m_pTree->palette(); // the branches beside a selected row are drawn by the style
	palette.setColor( QPalette::Highlight, MiniProfilerPalette::For( bDark ).m_SelectedFill );
	m_pTree->setPalette( palette );
	m_pMenu = new CQMiniProfilerMenu( *m_pDelegate, this );
	m_pTree->SetContextMenu( m_pMenu );
}

void CQMiniProfilerWidget::CreateControls()
{
	m_pGroupMode = new QComboBox( this );
	const auto AddGroupMode = [this]( const QString &text, MiniProfilerGroupMode mode )
	{ m_pGroupMode->addItem( text, static_cast<int>( mode ) ); };
	AddGroupMode( tr( "No Group Hierarchy" ), MiniProfilerGroupMode::None );
	AddGroupMode( tr( "Group by Budget" ), MiniProfilerGroupMode::Budget );
	AddGroupMode( tr( "Group by File" ), MiniProfilerGroupMode::File );
	AddGroupMode( tr( "Group by Function" ), MiniProfilerGroupMode::Function );
	AddGroupMode( tr( "Group by Project" ), MiniProfilerGroupMode::Project );

	m_pLeafMode = new QComboBox( this );
	m_pLeafMode->addItem( tr( "No Leaf Hierarchy" ), static_cast<int>( MiniProfilerLeafMode::None ) );
	m_pLeafMode->addItem( tr( "Leaf Static Tree" ), static_cast<int>( MiniProfilerLeafMode::StaticTree ) );
	m_pLeafMode->addItem( tr( "Leaf Dynamic Tree (approx)" ), static_cast<int>( MiniProfilerLeafMode::DynamicTree ) );

	m_pOverhead = new QLabel( this );
	m_pOverhead->setMinimumHeight( OVERHEAD_LINES * fontMetrics().lineSpacing() ); // from the start
	GiveTheRest( *m_pOverhead );
	m_pUnit = new QComboBox( this );
	for ( const MiniProfilerUnit &unit : MiniProfilerUnits() )
		m_pUnit->addItem( unit.m_Label );
	m_pUnit->setCurrentIndex( MINIPROFILER_DEFAULT_UNIT );

	m_pShowCur = new QCheckBox( tr( "Cur" ), this );
	m_pShowAve = new QCheckBox( tr( "Ave" ), this );
	m_pShowStDev = new QCheckBox( tr( "StDev" ), this );
	m_pShowPeaks = new QCheckBox( tr( "Peaks" ), this );
	m_pShowAve->setChecked( true );
}

void CQMiniProfilerWidget::CreateLayout()
{
	auto *pNumbers = new QHBoxLayout;
	pNumbers->setContentsMargins( 0, 0, 0, 0 );
	for ( QCheckBox *pBox : { m_pShowCur, m_pShowAve, m_pShowStDev, m_pShowPeaks } )
		pNumbers->addWidget( pBox );

	auto *pGrid = new QGridLayout;
	pGrid->addWidget( m_pGroupMode, 0, 0 );
	pGrid->addWidget( m_pLeafMode, 0, 1 );
	pGrid->addWidget( m_pOverhead, 0, 2, 2, 1 );
	pGrid->addWidget( m_pUnit, 0, 3, 1, 2 );
	pGrid->addLayout( pNumbers, 1, 3, 1, 2 );
	pGrid->setColumnStretch( 2, 1 );

	auto *pLayout = new QVBoxLayout( this );
	pLayout->addWidget( m_pToolBar );
	pLayout->addWidget( m_pTree, 100 );
	pLayout->addLayout( pGrid );
}

void CQMiniProfilerWidget::ConnectControls()
{
	connect( m_pSearch, SIGNAL( textEdited( QString ) ), SLOT( OnSearchMiniProfiler( QString ) ) );
	connect( m_pSearch, SIGNAL( StepRequested( bool ) ), SLOT( OnSearchStep( bool ) ) );
	connect( m_pTree, SIGNAL( itemSelectionChanged() ), SLOT( OnTreeSelectionChanged() ) );
	connect( m_pTree, SIGNAL( customContextMenuRequested( QPoint ) ), SLOT( OnContextMenuRequested( QPoint ) ) );
	connect( m_pTree, SIGNAL( CopyRequested() ), SLOT( OnCopyRows() ) );
	connect(
		m_pTree, SIGNAL( JumpToParentRequested( QTreeWidgetItem * ) ), SLOT( OnJumpToParent( QTreeWidgetItem * ) ) );
	connect( m_pUnit, SIGNAL( currentIndexChanged( int ) ), SLOT( RegenerateDataView() ) );
	for ( QCheckBox *pBox : { m_pShowCur, m_pShowAve, m_pShowStDev, m_pShowPeaks } )
		connect( pBox, SIGNAL( stateChanged( int ) ), SLOT( OnDisplayNumbersChanged() ) );
	connect( m_pPause, SIGNAL( toggled( bool ) ), SLOT( OnPauseToggled( bool ) ) );
	connect( m_pGroupMode, SIGNAL( currentIndexChanged( int ) ), SLOT( OnHierarchyModeChanged() ) );
	connect( m_pLeafMode, SIGNAL( currentIndexChanged( int ) ), SLOT( OnHierarchyModeChanged() ) );
	connect( &m_RegenerationTimer, SIGNAL( timeout() ), SLOT( RegenerateDataView() ) );

	auto *pFind = new QShortcut( QKeySequence::Find, this );
	pFind->setContext( Qt::WidgetWithChildrenShortcut );
	connect( pFind, SIGNAL( activated() ), m_pSearch, SLOT( setFocus() ) );
	connect( pFind, SIGNAL( activated() ), m_pSearch, SLOT( selectAll() ) );
}

void CQMiniProfilerWidget::ConnectMenu()
{
	// Peaks are collected only while they are drawn, so what is drawn is more than a matter of painting.
	connect( m_pDelegate, SIGNAL( Changed() ), SLOT( RegenerateDataView() ) );
	connect( m_pMenu, SIGNAL( NormaliseToggled() ), SLOT( OnTreeSelectionChanged() ) );
	connect( m_pMenu, SIGNAL( SortToggled( bool ) ), SLOT( OnEnableSorting( bool ) ) );
	connect( m_pMenu, SIGNAL( CopyAddressTriggered() ), SLOT( OnCopyProfilerAddress() ) );
	connect( m_pMenu, SIGNAL( ClearSelectionTriggered() ), SLOT( OnClearSelection() ) );
	connect( m_pMenu, SIGNAL( DisambiguateTriggered() ), SLOT( OnDisambiguateByCaller() ) );
}
