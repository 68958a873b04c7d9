#include "consolepanel.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QScrollBar>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "displaytext.h"
#include "style.h"

CQConsolePanel::CQConsolePanel( CConsoleModel &model, QWidget *pParent )
	: QWidget( pParent )
	, m_Model( model )
{
	m_Filter.setSourceModel( &m_Model );
	m_Model.SetDarkStyle( IsDarkStyleActive() );
	auto *pLayout = new QVBoxLayout( this );
	pLayout->setContentsMargins( 6, 6, 6, 6 );
	pLayout->addWidget( MakeFilterRow() );
	pLayout->addWidget( MakeLines(), 1 );
	pLayout->addWidget( MakeCommandRow() );
	UpdateFonts();
	SetCommandTarget( QString() );
}

QWidget *CQConsolePanel::MakeFilterRow()
{
	auto *pRow = new QWidget;
	auto *pLayout = new QHBoxLayout( pRow );
	pLayout->setContentsMargins( 0, 0, 0, 0 );
	m_pFilterEdit = new QLineEdit;
	m_pFilterEdit->setObjectName( "ConsoleFilter" );
	m_pFilterEdit->setPlaceholderText( tr( "Filter lines" ) );
	m_pFilterEdit->setClearButtonEnabled( true );
	connect( m_pFilterEdit, &QLineEdit::textChanged, this, &CQConsolePanel::OnFilterChanged );
	m_pSeverityBox = new QComboBox;
	m_pSeverityBox->setObjectName( "ConsoleSeverity" );
	m_pSeverityBox->addItem( tr( "All lines" ), static_cast<int>( LoggingSeverity::Message ) );
	m_pSeverityBox->addItem( tr( "Warnings and errors" ), static_cast<int>( LoggingSeverity::Warning ) );
	m_pSeverityBox->addItem( tr( "Errors" ), static_cast<int>( LoggingSeverity::Error ) );
	connect(
		m_pSeverityBox, qOverload<int>( &QComboBox::currentIndexChanged ), this, &CQConsolePanel::OnFilterChanged );
	auto *pClear = new QToolButton;
	pClear->setText( tr( "Clear" ) );
	pClear->setToolTip( tr( "Remove all lines from the console" ) );
	connect( pClear, &QToolButton::clicked, this, &CQConsolePanel::OnClear );
	pLayout->addWidget( m_pFilterEdit, 1 );
	pLayout->addWidget( m_pSeverityBox );
	pLayout->addWidget( pClear );
	return pRow;
}

QWidget *CQConsolePanel::MakeLines()
{
	m_pLines = new QTreeView;
	m_pLines->setObjectName( "ConsoleLines" );
	m_pLines->setModel( &m_Filter );
	m_pLines->setRootIsDecorated( false );
	m_pLines->setUniformRowHeights( true );
	m_pLines->setAlternatingRowColors( true );
	m_pLines->setSelectionMode( QAbstractItemView::ExtendedSelection );
	m_pLines->setHorizontalScrollMode( QAbstractItemView::ScrollPerPixel );
	m_pLines->setHeaderHidden( true );
	m_pLines->setContextMenuPolicy( Qt::CustomContextMenu );
	m_pLines->installEventFilter( this );
	connect( m_pLines, &QTreeView::customContextMenuRequested, this, &CQConsolePanel::OnContextMenu );
	connect( &m_Filter, &QAbstractItemModel::rowsAboutToBeInserted, this, &CQConsolePanel::OnAboutToInsert );
	connect( &m_Filter, &QAbstractItemModel::rowsInserted, this, &CQConsolePanel::OnInserted );
	return m_pLines;
}

QWidget *CQConsolePanel::MakeCommandRow()
{
	auto *pRow = new QWidget;
	auto *pLayout = new QHBoxLayout( pRow );
	pLayout->setContentsMargins( 0, 0, 0, 0 );
	m_pPrompt = new QLabel;
	// The name comes from outside: it is shown as it is, never as markup.
	m_pPrompt->setTextFormat( Qt::PlainText );
	m_pCommandEdit = new QLineEdit;
	m_pCommandEdit->setObjectName( "ConsoleCommand" );
	m_pCommandEdit->installEventFilter( this );
	connect( m_pCommandEdit, &QLineEdit::returnPressed, this, &CQConsolePanel::OnCommandReturn );
	pLayout->addWidget( m_pPrompt );
	pLayout->addWidget( m_pCommandEdit, 1 );
	return pRow;
}

void CQConsolePanel::UpdateFonts()
{
	QFont font( "monospace" );
	font.setStyleHint( QFont::Monospace );
	font.setPointSizeF( QApplication::font().pointSizeF() );
	m_pLines->setFont( font );
	m_pCommandEdit->setFont( font );
	const QFontMetrics metrics( font );
	m_pLines->header()->resizeSection( CConsoleModel::TimeColumn, metrics.horizontalAdvance( "00:00:00.000" ) + 24 );
	m_pLines->header()->resizeSection(
		CConsoleModel::SourceColumn, metrics.horizontalAdvance( "demo_engine_00" ) + 16 );
}

void CQConsolePanel::SetCommandTarget( const QString &name )
{
	m_pCommandEdit->setEnabled( !name.isEmpty() );
	m_pPrompt->setText( name.isEmpty() ? QStringLiteral( ">" ) : ToDisplayLine( name, 24 ) + QStringLiteral( " >" ) );
	m_pCommandEdit->setPlaceholderText(
		name.isEmpty() ? tr( "Connect to an engine to send commands" ) : tr( "Command for the engine" ) );
}

QString CQConsolePanel::SelectedText() const
{
	QModelIndexList rows = m_pLines->selectionModel()->selectedRows();
	std::sort( rows.begin(), rows.end() );
	QStringList lines;
	for ( const QModelIndex &row : rows )
		lines += row.data( CConsoleModel::LineRole ).toString();
	for ( int nRow = 0; rows.isEmpty() && nRow < m_Filter.rowCount(); nRow++ )
		lines += m_Filter.index( nRow, 0 ).data( CConsoleModel::LineRole ).toString();
	return lines.isEmpty() ? QString() : lines.join( '\n' ) + '\n';
}

void CQConsolePanel::OnCopy()
{
	QApplication::clipboard()->setText( SelectedText() );
}

void CQConsolePanel::OnClear()
{
	m_Model.Clear();
	m_bFollowsEnd = true;
}

bool CQConsolePanel::eventFilter( QObject *pWatched, QEvent *pEvent )
{
	if ( pEvent->type() != QEvent::KeyPress )
		return QWidget::eventFilter( pWatched, pEvent );
	const auto *pKey = static_cast<QKeyEvent *>( pEvent );
	if ( pWatched == m_pLines && pKey->matches( QKeySequence::Copy ) )
	{
		OnCopy();
		return true;
	}
	const bool bUp = pKey->key() == Qt::Key_Up;
	if ( pWatched == m_pCommandEdit && ( bUp || pKey->key() == Qt::Key_Down ) )
	{
		const QString draft = m_pCommandEdit->text();
		m_pCommandEdit->setText( bUp ? m_History.Older( draft ) : m_History.Newer( draft ) );
		return true;
	}
	return QWidget::eventFilter( pWatched, pEvent );
}

void CQConsolePanel::changeEvent( QEvent *pEvent )
{
	if ( pEvent->type() == QEvent::PaletteChange )
		m_Model.SetDarkStyle( IsDarkStyleActive() );
	QWidget::changeEvent( pEvent );
}

void CQConsolePanel::OnFilterChanged()
{
	m_Filter.SetText( m_pFilterEdit->text() );
	m_Filter.SetLeastSeverity( static_cast<LoggingSeverity>( m_pSeverityBox->currentData().toInt() ) );
	m_pLines->scrollToBottom();
}

void CQConsolePanel::OnCommandReturn()
{
	const QString command = m_pCommandEdit->text().trimmed();
	if ( command.isEmpty() )
		return;
	m_History.Add( command );
	m_pCommandEdit->clear();
	emit CommandEntered( command );
}

// A user who scrolled back to read stays there while lines arrive.
void CQConsolePanel::OnAboutToInsert()
{
	const QScrollBar *pBar = m_pLines->verticalScrollBar();
	m_bFollowsEnd = pBar->value() == pBar->maximum();
}

void CQConsolePanel::OnInserted()
{
	if ( m_bFollowsEnd )
		m_pLines->scrollToBottom();
}

void CQConsolePanel::OnContextMenu( const QPoint &ptLocal )
{
	const QPointer<CQConsolePanel> pSelf( this );
	QMenu menu;
	const QAction *pCopy =
		menu.addAction( m_pLines->selectionModel()->hasSelection() ? tr( "Copy" ) : tr( "Copy all lines" ) );
	const QAction *pSelectAll = menu.addAction( tr( "Select all" ) );
	menu.addSeparator();
	const QAction *pClear = menu.addAction( tr( "Clear" ) );
	const QAction *pChosen = menu.exec( m_pLines->viewport()->mapToGlobal( ptLocal ) );
	if ( !pSelf || !pChosen )
		return;
	if ( pChosen == pCopy )
		OnCopy();
	else if ( pChosen == pSelectAll )
		m_pLines->selectAll();
	else if ( pChosen == pClear )
		OnClear();
}
