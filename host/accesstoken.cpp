#include "accesstoken.h"

#include <QCoreApplication>
#include <QFile>

#include "wire/sessionchunks.h"

namespace
{
constexpr const char *TOKEN_VARIABLE = "SHOWBUDGET_TOKEN";
constexpr const char *TOKEN_FILE_VARIABLE = "SHOWBUDGET_TOKEN_FILE";

QString Tr( const char *pText )
{
	return QCoreApplication::translate( "AccessToken", pText );
}

std::optional<std::string> CheckToken( const QByteArray &token, const QString &origin, QString &error )
{
	if ( wire::IsToken( { token.constData(), static_cast<size_t>( token.size() ) } ) )
		return token.toStdString();
	error = Tr( "%1 is no token: it must have 1 to %2 bytes and no control characters" )
				.arg( origin, QString::number( wire::MAX_HELLO_TOKEN ) );
	return std::nullopt;
}

std::optional<std::string> ReadTokenFile( const QString &path, QString &error )
{
	QFile file( path );
	if ( !file.open( QIODevice::ReadOnly ) )
	{
		error = Tr( "cannot read the token file %1: %2" ).arg( path, file.errorString() );
		return std::nullopt;
	}
	QByteArray line = file.readLine( wire::MAX_HELLO_TOKEN + 3 ); // a longer line is none, whatever follows
	for ( const char end : { '\n', '\r' } )
		if ( line.endsWith( end ) )
			line.chop( 1 );
	return CheckToken( line, Tr( "the first line of %1" ).arg( path ), error );
}
} // namespace

std::optional<std::string> FindAccessToken( const QString &tokenFile, QString &error )
{
	if ( !tokenFile.isEmpty() )
		return ReadTokenFile( tokenFile, error );
	if ( const QByteArray token = qgetenv( TOKEN_VARIABLE ); !token.isEmpty() )
		return CheckToken( token, QLatin1String( TOKEN_VARIABLE ), error );
	if ( const QByteArray path = qgetenv( TOKEN_FILE_VARIABLE ); !path.isEmpty() )
		return ReadTokenFile( QFile::decodeName( path ), error );
	return std::string();
}
