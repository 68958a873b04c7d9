#include "connectionspanel.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "connectionlist.h"
#include "style.h"
#include "targetconnection.h"

CQConnectionsPanel::CQConnectionsPanel( CConnectionList &list, QWidget *pParent )
	: QWidget( pParent )
	, m_List( list )
	, m_Model( list )
{
	auto *pLayout = new QVBoxLayout( this );
	pLayout->setContentsMargins( 6, 6, 6, 6 );
	pLayout->addWidget( MakeAddressBar() );
	m_pError = new QLabel;
	m_pError->setObjectName( "AddressError" );
	m_pError->setTextFormat( Qt::PlainText );
	m_pError->setWordWrap( true );
	m_pError->hide();
	pLayout->addWidget( m_pError );
	pLayout->addWidget( MakeList(), 1 );
	pLayout->addWidget( MakeButtons() );
	connect( &m_List, &CConnectionList::CurrentChanged, this, &CQConnectionsPanel::OnUpdate );
	connect( &m_List, &CConnectionList::Changed, this, &CQConnectionsPanel::OnUpdate );
	connect( &m_List, &CConnectionList::Added, this, &CQConnectionsPanel::OnUpdate );
	OnUpdate();
}

QWidget *CQConnectionsPanel::MakeAddressBar()
{
	auto *pRow = new QWidget;
	auto *pLayout = new QHBoxLayout( pRow );
	pLayout->setContentsMargins( 0, 0, 0, 0 );
	auto *pLabel = new QLabel( tr( "&Address:" ) );
	m_pAddressBox = new QComboBox;
	m_pAddressBox->setObjectName( "AddressBar" );
	m_pAddressBox->setEditable( true );
	m_pAddressBox->setInsertPolicy( QComboBox::NoInsert );
	m_pAddressBox->setSizePolicy( QSizePolicy::Expanding, QSizePolicy::Fixed );
	m_pAddressBox->setEditText( TargetAddress().ToString() );
	m_pAddressBox->setToolTip( tr( "Where the engine listens: host[:port]" ) );
	pLabel->setBuddy( m_pAddressBox );
	auto *pConnect = new QPushButton( tr( "&Connect" ) );
	pConnect->setObjectName( "ConnectButton" );
	connect( pConnect, &QPushButton::clicked, this, &CQConnectionsPanel::OnConnectClicked );
	connect( m_pAddressBox->lineEdit(), &QLineEdit::returnPressed, this, &CQConnectionsPanel::OnConnectClicked );
	connect( m_pAddressBox, &QComboBox::editTextChanged, this, [this]() { ShowError( QString() ); } );
	pLayout->addWidget( pLabel );
	pLayout->addWidget( m_pAddressBox, 1 );
	pLayout->addWidget( pConnect );
	return pRow;
}

QWidget *CQConnectionsPanel::MakeList()
{
	m_pView = new QTreeView;
	m_pView->setObjectName( "ConnectionList" );
	m_pView->setModel( &m_Model );
	m_pView->setRootIsDecorated( false );
	m_pView->setUniformRowHeights( true );
	m_pView->setAllColumnsShowFocus( true );
	m_pView->setAlternatingRowColors( true );
	QHeaderView *pHeader = m_pView->header();
	pHeader->setStretchLastSection( false );
	pHeader->setSectionResizeMode( QHeaderView::Interactive );
	pHeader->setSectionResizeMode( CConnectionsModel::StateColumn, QHeaderView::Stretch );
	const QFontMetrics metrics( font() );
	// Where room is short the state, which takes what is left, still tells the states apart.
	pHeader->setMinimumSectionSize( metrics.horizontalAdvance( tr( "Disconnected" ) ) + 24 );
	const auto widen = [&]( int nColumn, const char *pLongest )
	{ pHeader->resizeSection( nColumn, metrics.horizontalAdvance( pLongest ) + 24 ); };
	widen( CConnectionsModel::NameColumn, "a name of an engine " );
	widen( CConnectionsModel::AddressColumn, "127.000.000.001:65535" );
	widen( CConnectionsModel::ChunksColumn, "Chunks/s  " );
	widen( CConnectionsModel::BytesColumn, "999.9 MB/s" );
	widen( CConnectionsModel::DroppedColumn, "Dropped frames " );
	connect( m_pView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
		&CQConnectionsPanel::OnCurrentRowChanged );
	connect( m_pView, &QTreeView::doubleClicked, this, &CQConnectionsPanel::OnToggleClicked );
	MakeHint();
	return m_pView;
}

void CQConnectionsPanel::MakeHint()
{
	m_pHint = new QLabel( tr( "Enter above where an engine listens, and press Connect.\n"
							  "Without an engine at hand, start this program with --demo." ) );
	m_pHint->setObjectName( "ConnectionHint" );
	m_pHint->setAlignment( Qt::AlignCenter );
	m_pHint->setWordWrap( true );
	m_pHint->setForegroundRole( QPalette::PlaceholderText );
	m_pHint->setAttribute( Qt::WA_TransparentForMouseEvents );
	auto *pLayout = new QVBoxLayout( m_pView->viewport() );
	pLayout->addWidget( m_pHint );
}

QWidget *CQConnectionsPanel::MakeButtons()
{
	auto *pRow = new QWidget;
	auto *pLayout = new QHBoxLayout( pRow );
	pLayout->setContentsMargins( 0, 0, 0, 0 );
	m_pToggle = new QPushButton;
	m_pToggle->setObjectName( "ToggleButton" );
	m_pRemove = new QPushButton( tr( "Remove" ) );
	m_pRemove->setObjectName( "RemoveButton" );
	m_pRemove->setToolTip( tr( "Disconnect, close the windows of this connection, and take it out of the list" ) );
	connect( m_pToggle, &QPushButton::clicked, this, &CQConnectionsPanel::OnToggleClicked );
	connect( m_pRemove, &QPushButton::clicked, this, &CQConnectionsPanel::OnRemoveClicked );
	pLayout->addStretch( 1 );
	pLayout->addWidget( m_pToggle );
	pLayout->addWidget( m_pRemove );
	return pRow;
}

void CQConnectionsPanel::SetRecentAddresses( const QStringList &addresses )
{
	m_pAddressBox->clear();
	m_pAddressBox->addItems( addresses.mid( 0, MAX_RECENT ) );
	m_pAddressBox->setEditText( addresses.isEmpty() ? TargetAddress().ToString() : addresses.first() );
}

QStringList CQConnectionsPanel::RecentAddresses() const
{
	QStringList addresses;
	for ( int i = 0; i < m_pAddressBox->count(); i++ )
		addresses += m_pAddressBox->itemText( i );
	return addresses;
}

void CQConnectionsPanel::AddRecentAddress( const TargetAddress &address )
{
	QStringList addresses = RecentAddresses();
	addresses.removeAll( address.ToString() );
	addresses.prepend( address.ToString() );
	SetRecentAddresses( addresses );
}

void CQConnectionsPanel::OnFocusAddress()
{
	m_pAddressBox->setFocus();
	m_pAddressBox->lineEdit()->selectAll();
}

void CQConnectionsPanel::OnConnectClicked()
{
	QString error;
	const std::optional<TargetAddress> address = ParseTargetAddress( m_pAddressBox->currentText(), error );
	ShowError( error );
	if ( address )
		emit ConnectRequested( *address );
}

void CQConnectionsPanel::ShowError( const QString &error )
{
	QPalette palette = m_pError->palette();
	palette.setColor( QPalette::WindowText, SeverityColour( LoggingSeverity::Error, IsDarkStyleActive() ) );
	m_pError->setPalette( palette );
	m_pError->setText( error );
	m_pError->setVisible( !error.isEmpty() );
}

void CQConnectionsPanel::OnToggleClicked()
{
	CTargetConnection *pConnection = m_List.Current();
	if ( !pConnection )
		return;
	if ( pConnection->IsWanted() )
		pConnection->Disconnect();
	else
		pConnection->Connect();
}

void CQConnectionsPanel::OnRemoveClicked()
{
	if ( m_List.Current() )
		m_List.Remove( m_List.Current() );
}

void CQConnectionsPanel::OnCurrentRowChanged( const QModelIndex &index )
{
	if ( index.isValid() )
		m_List.SetCurrent( m_Model.ConnectionAt( index ) );
}

void CQConnectionsPanel::OnUpdate()
{
	const CTargetConnection *pConnection = m_List.Current();
	m_pHint->setVisible( m_List.Count() == 0 );
	m_pToggle->setEnabled( pConnection );
	m_pRemove->setEnabled( pConnection );
	m_pToggle->setText( pConnection && pConnection->IsWanted() ? tr( "Disconnect" ) : tr( "Connect" ) );
	const int nRow = m_List.IndexOf( pConnection );
	if ( nRow >= 0 && nRow < m_Model.rowCount() && m_pView->currentIndex().row() != nRow )
		m_pView->setCurrentIndex( m_Model.index( nRow, 0 ) );
}
