#include "views/layoutsettings.h"

#include <QCryptographicHash>
#include <optional>
#include <string>

#include "keel0/keyvalues.h"
#include "keel0/logging.h"

static std::string CheckKey( const char *pKey )
{
	return std::string( pKey ) + "_check";
}

// Of the key too: one layout must not pass for another.
static QByteArray CheckValue( const char *pKey, const QByteArray &text )
{
	return QCryptographicHash::hash( QByteArray( pKey ) + '\n' + text, QCryptographicHash::Sha256 ).toHex();
}

static std::optional<QByteArray> DecodeStrictly( const QByteArray &text )
{
	const auto result = QByteArray::fromBase64Encoding( text, QByteArray::AbortOnBase64DecodingErrors );
	if ( !result || result.decoded.toBase64() != text )
		return std::nullopt;
	return result.decoded;
}

void WriteLayout( KeyValues &settings, const char *pKey, const QByteArray &layout )
{
	const QByteArray text = layout.toBase64();
	settings.SetString( pKey, text.constData() );
	settings.SetString( CheckKey( pKey ).c_str(), CheckValue( pKey, text ).constData() );
}

QByteArray ReadLayout( KeyValues &settings, const char *pKey, bool ( *pIsLayout )( const QByteArray & ) )
{
	const std::string checkKey = CheckKey( pKey );
	const QByteArray text = settings.GetString( pKey );
	if ( text.isEmpty() )
		return {};
	const QByteArray check = settings.GetString( checkKey.c_str() );
	if ( const std::optional<QByteArray> layout = DecodeStrictly( text ) )
	{
		if ( check.isEmpty() ? pIsLayout( *layout ) : check == CheckValue( pKey, text ) )
			return *layout;
	}
	Warning( "The setting \"%s\" is damaged and left out: the layout stays as it is\n", pKey );
	settings.RemoveKey( pKey );
	settings.RemoveKey( checkKey.c_str() );
	return {};
}
