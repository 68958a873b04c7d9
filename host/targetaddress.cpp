#include "targetaddress.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QRegularExpression>

#include "displaytext.h"

namespace
{
constexpr int MAX_HOST_NAME = 253;

QString Tr( const char *pText )
{
	return QCoreApplication::translate( "TargetAddress", pText );
}

struct Halves
{
	QString m_Host;
	QString m_Port;
	bool m_bHasPort = false;
	bool m_bBracketed = false;
};

std::optional<Halves> SplitAddress( const QString &text )
{
	Halves halves;
	int nColon = -1;
	if ( text.startsWith( '[' ) )
	{
		const int nClose = text.indexOf( ']' );
		if ( nClose < 0 || ( nClose + 1 < text.size() && text[nClose + 1] != ':' ) )
			return std::nullopt;
		halves.m_Host = text.mid( 1, nClose - 1 );
		halves.m_bBracketed = true;
		nColon = nClose + 1 < text.size() ? nClose + 1 : -1;
	}
	else
	{
		// More than one colon without brackets can only be an IPv6 address without a port.
		nColon = text.count( ':' ) == 1 ? text.indexOf( ':' ) : -1;
		halves.m_Host = text.left( nColon );
	}
	if ( nColon >= 0 )
	{
		halves.m_bHasPort = true;
		halves.m_Port = text.mid( nColon + 1 );
	}
	return halves;
}

bool IsIPv6( const QString &text )
{
	QHostAddress address;
	return address.setAddress( text ) && address.protocol() == QAbstractSocket::IPv6Protocol;
}

bool IsHostName( const QString &text )
{
	static const QRegularExpression pattern(
		QStringLiteral( "\\A[a-z0-9_]([a-z0-9_-]*[a-z0-9_])?(\\.[a-z0-9_]([a-z0-9_-]*[a-z0-9_])?)*\\.?\\z" ) );
	static const QRegularExpression digits( QStringLiteral( "\\A[0-9.]+\\z" ) );
	if ( text.size() > MAX_HOST_NAME || !pattern.match( text ).hasMatch() )
		return false;
	// What looks like an IPv4 address must be a whole one: "127.0.0" would be understood in surprising ways.
	QHostAddress address;
	return !digits.match( text ).hasMatch() || ( text.count( '.' ) == 3 && address.setAddress( text ) );
}

std::optional<uint16_t> ReadPort( const QString &text )
{
	static const QRegularExpression digits( QStringLiteral( "\\A[0-9]{1,5}\\z" ) );
	if ( !digits.match( text ).hasMatch() )
		return std::nullopt;
	const uint nPort = text.toUInt();
	if ( nPort < 1 || nPort > 65535 )
		return std::nullopt;
	return static_cast<uint16_t>( nPort );
}
} // namespace

QString TargetAddress::ToString() const
{
	const QString format = m_Host.contains( ':' ) ? QStringLiteral( "[%1]:%2" ) : QStringLiteral( "%1:%2" );
	return format.arg( m_Host, QString::number( m_nPort ) );
}

std::optional<TargetAddress> ParseTargetAddress( const QString &text, QString &error )
{
	const QString trimmed = text.trimmed();
	const QString shown = ToDisplayLine( trimmed, 80 );
	if ( trimmed.isEmpty() )
	{
		error = Tr( "an address is missing: it is host[:port]" );
		return std::nullopt;
	}
	const std::optional<Halves> halves = SplitAddress( trimmed );
	if ( !halves )
	{
		error = Tr( "bad address \"%1\": the bracket is not closed before the port" ).arg( shown );
		return std::nullopt;
	}
	TargetAddress address;
	address.m_Host = halves->m_Host.toLower();
	if ( address.m_Host.isEmpty() )
	{
		error = Tr( "bad address \"%1\": the host is missing" ).arg( shown );
		return std::nullopt;
	}
	if ( !IsIPv6( address.m_Host ) && ( halves->m_bBracketed || !IsHostName( address.m_Host ) ) )
	{
		error = Tr( "bad address \"%1\": \"%2\" is neither a host name nor an address" )
					.arg( shown, ToDisplayLine( halves->m_Host, 80 ) );
		return std::nullopt;
	}
	if ( halves->m_bHasPort )
	{
		const std::optional<uint16_t> nPort = ReadPort( halves->m_Port );
		if ( !nPort )
		{
			error = Tr( "bad address \"%1\": the port must be a number from 1 to 65535" ).arg( shown );
			return std::nullopt;
		}
		address.m_nPort = *nPort;
	}
	return address;
}
