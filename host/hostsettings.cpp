#include "hostsettings.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include "keel0/logging.h"
#include "targetaddress.h"

namespace
{
constexpr const char *ROOT_NAME = "Tessel";
constexpr const char *STYLE_KEY = "style";
constexpr const char *RECENT_KEY = "recent_addresses";
constexpr const char *WINDOW_KEY = "main_window";
constexpr const char *SUB_TOOLS_KEY = "sub_tools";
constexpr const char *GEOMETRY_KEY = "geometry";
constexpr const char *STATE_KEY = "state";

const KeyValues *FindTree( const KeyValues &root, const char *pKey )
{
	const KeyValues *pTree = root.FindKey( pKey );
	return pTree && pTree->IsSubTree() ? pTree : nullptr;
}

QByteArray CheckKey( const char *pKey )
{
	return QByteArray( pKey ) + "_check";
}

// Tells a change from what was saved, by accident or by hand; it protects from nobody.
QByteArray CheckValue( const QByteArray &text )
{
	return QCryptographicHash::hash( text, QCryptographicHash::Sha1 ).toHex();
}

void SetChecked( KeyValues &tree, const char *pKey, const QByteArray &bytes )
{
	const QByteArray text = bytes.toBase64();
	tree.SetString( pKey, text.constData() );
	tree.SetString( CheckKey( pKey ).constData(), CheckValue( text ).constData() );
}

// Files of older versions have no check value: there the text must at least be what an encoder writes. That is enough
// for a geometry, which is a few numbers. The toolkit's reader of a state believes every count in it and would be busy
// for minutes, or fall down its own calls, so a state that nothing vouches for is not given to it.
bool IsAsSaved( const KeyValues &tree, const char *pKey )
{
	const QByteArray text = tree.GetString( pKey );
	if ( const QByteArray check = tree.GetString( CheckKey( pKey ).constData() ); !check.isEmpty() )
		return check == CheckValue( text );
	if ( pKey == QLatin1String( STATE_KEY ) )
		return text.isEmpty();
	const auto result = QByteArray::fromBase64Encoding( text, QByteArray::AbortOnBase64DecodingErrors );
	return result && ( *result ).toBase64() == text;
}
} // namespace

QString CHostSettings::DefaultPath()
{
	return QStandardPaths::writableLocation( QStandardPaths::AppConfigLocation ) + "/tessel.settings";
}

CHostSettings::CHostSettings( const QString &path )
	: m_Path( path )
	, m_Root( ROOT_NAME )
{
	KeyValues::ParseError error;
	std::string keptAs;
	const std::string file = QFile::encodeName( path ).toStdString();
	if ( m_Root.LoadSettingsFile( file.c_str(), &error, &keptAs ) == KeyValues::LoadResult::Unreadable )
		m_bMaySave = !keptAs.empty();
	DropDamagedWindowValues();
}

void CHostSettings::DropDamagedWindowValues()
{
	KeyValues *pWindow = m_Root.FindKey( WINDOW_KEY );
	if ( !pWindow || !pWindow->IsSubTree() )
		return;
	bool bDropped = false;
	for ( const char *pKey : { GEOMETRY_KEY, STATE_KEY } )
		if ( !IsAsSaved( *pWindow, pKey ) )
			bDropped = pWindow->RemoveKey( pKey ) || bDropped;
	if ( bDropped )
		Warning( "The main window does not get its old place or layout: it is damaged in %s, or nothing shows that it "
				 "is not\n",
			qUtf8Printable( m_Path ) );
}

bool CHostSettings::Save()
{
	if ( !m_bMaySave )
	{
		Warning( "The settings are not saved: %s could neither be read nor moved aside\n", qUtf8Printable( m_Path ) );
		return false;
	}
	QDir().mkpath( QFileInfo( m_Path ).absolutePath() );
	KeyValues::ParseError error;
	const std::string file = QFile::encodeName( m_Path ).toStdString();
	if ( m_Root.SaveToFile( file.c_str(), &error ) )
		return true;
	Warning( "The settings are not saved: %s\n", error.m_Message.c_str() );
	return false;
}

StyleChoice CHostSettings::Style() const
{
	return ParseStyleName( QString::fromUtf8( m_Root.GetString( STYLE_KEY ) ) ).value_or( StyleChoice::System );
}

void CHostSettings::SetStyle( StyleChoice choice )
{
	m_Root.SetString( STYLE_KEY, StyleName( choice ) );
}

QStringList CHostSettings::RecentAddresses() const
{
	QStringList addresses;
	const KeyValues *pRecent = FindTree( m_Root, RECENT_KEY );
	for ( int i = 0; pRecent && i < pRecent->GetCount(); i++ )
	{
		QString error;
		const QString text = QString::fromUtf8( pRecent->GetEntry( i )->GetValue() );
		if ( const std::optional<TargetAddress> address = ParseTargetAddress( text, error ) )
			addresses += address->ToString();
	}
	addresses.removeDuplicates();
	return addresses;
}

void CHostSettings::SetRecentAddresses( const QStringList &addresses )
{
	auto *pRecent = new KeyValues( RECENT_KEY );
	for ( int i = 0; i < addresses.size(); i++ )
		pRecent->SetString( std::to_string( i ).c_str(), addresses[i].toUtf8().constData() );
	m_Root.AddSubTree( pRecent );
}

QByteArray CHostSettings::ReadWindowKey( const char *pKey ) const
{
	const KeyValues *pWindow = FindTree( m_Root, WINDOW_KEY );
	return pWindow ? QByteArray::fromBase64( pWindow->GetString( pKey ) ) : QByteArray();
}

QByteArray CHostSettings::WindowGeometry() const
{
	return ReadWindowKey( GEOMETRY_KEY );
}

QByteArray CHostSettings::WindowState() const
{
	return ReadWindowKey( STATE_KEY );
}

void CHostSettings::SetWindow( const QByteArray &geometry, const QByteArray &state )
{
	auto *pWindow = new KeyValues( WINDOW_KEY );
	SetChecked( *pWindow, GEOMETRY_KEY, geometry );
	SetChecked( *pWindow, STATE_KEY, state );
	m_Root.AddSubTree( pWindow );
}

KeyValues &CHostSettings::SubTools()
{
	if ( !FindTree( m_Root, SUB_TOOLS_KEY ) )
		return *m_Root.AddSubTree( new KeyValues( SUB_TOOLS_KEY ) );
	return *m_Root.FindKey( SUB_TOOLS_KEY );
}
