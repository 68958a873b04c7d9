#include "tests/tools/fakeengine.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
constexpr int DEADLINE = 60000; // ms; only a fault reaches it

void PutBigEndian( std::vector<uint8_t> &bytes, uint32_t nValue, int nBytes )
{
	for ( int i = nBytes - 1; i >= 0; i-- )
		bytes.push_back( static_cast<uint8_t>( nValue >> 8 * i ) );
}
} // namespace

CFakeEngine::CFakeEngine( std::function<void( CFakeEngine & )> talk )
	: m_nListener( socket( AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0 ) )
{
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = htonl( INADDR_LOOPBACK );
	socklen_t nSize = sizeof( address );
	EXPECT_EQ( bind( m_nListener, reinterpret_cast<sockaddr *>( &address ), nSize ), 0 );
	EXPECT_EQ( listen( m_nListener, 1 ), 0 );
	EXPECT_EQ( getsockname( m_nListener, reinterpret_cast<sockaddr *>( &address ), &nSize ), 0 );
	m_nPort = ntohs( address.sin_port );
	m_Thread = std::thread(
		[this, talk = std::move( talk )]
		{
			pollfd descriptor{ m_nListener, POLLIN, 0 };
			if ( poll( &descriptor, 1, DEADLINE ) > 0 )
				m_nConsole = accept( m_nListener, nullptr, nullptr );
			ASSERT_GE( m_nConsole, 0 ) << "no console came";
			talk( *this );
			close( m_nConsole );
		} );
}

CFakeEngine::~CFakeEngine()
{
	m_Thread.join();
	close( m_nListener );
}

std::string CFakeEngine::Address() const
{
	return "127.0.0.1:" + std::to_string( m_nPort );
}

void CFakeEngine::SendBytes( const std::vector<uint8_t> &bytes )
{
	size_t nSent = 0;
	while ( nSent < bytes.size() )
	{
		const ssize_t nNow = send( m_nConsole, bytes.data() + nSent, bytes.size() - nSent, MSG_NOSIGNAL );
		if ( nNow <= 0 )
			return; // the console has enough
		nSent += static_cast<size_t>( nNow );
	}
}

void CFakeEngine::SendChunk( const char *pType, const std::vector<uint8_t> &payload, unsigned nVersion )
{
	std::vector<uint8_t> bytes( pType, pType + 4 );
	PutBigEndian( bytes, nVersion, 2 );
	PutBigEndian( bytes, 0, 2 );
	PutBigEndian( bytes, static_cast<uint32_t>( payload.size() ), 4 );
	bytes.insert( bytes.end(), payload.begin(), payload.end() );
	SendBytes( bytes );
}

void CFakeEngine::SendHello( uint32_t nProtocol )
{
	std::vector<uint8_t> payload;
	PutBigEndian( payload, nProtocol, 4 );
	for ( const uint32_t nField : { 4660u, 0u, 1000000000u } )
		PutBigEndian( payload, nField, 4 );
	payload.push_back( 'e' );
	SendChunk( "HELO", payload );
}

void CFakeEngine::SendBudgets( const std::vector<std::string> &names )
{
	std::vector<uint8_t> payload;
	PutBigEndian( payload, static_cast<uint32_t>( names.size() ), 4 );
	for ( std::string name : names )
	{
		name.resize( 68 );
		payload.insert( payload.end(), name.begin(), name.end() );
	}
	SendChunk( "PCAT", payload );
}

void CFakeEngine::SendFrame( const std::vector<uint32_t> &values, bool bBeginsTick, uint32_t nFrameRateBits )
{
	std::vector<uint8_t> payload;
	PutBigEndian( payload, static_cast<uint32_t>( values.size() ), 4 );
	PutBigEndian( payload, bBeginsTick ? 1 : 0, 4 );
	PutBigEndian( payload, nFrameRateBits, 4 );
	for ( const uint32_t nValue : values )
		PutBigEndian( payload, nValue, 4 );
	SendChunk( "PCPU", payload );
}

bool CFakeEngine::ReceiveBytes( std::span<uint8_t> bytes )
{
	while ( !bytes.empty() )
	{
		pollfd descriptor{ m_nConsole, POLLIN, 0 };
		if ( poll( &descriptor, 1, DEADLINE ) <= 0 )
		{
			ADD_FAILURE() << "the console says nothing";
			return false;
		}
		const ssize_t nNow = recv( m_nConsole, bytes.data(), bytes.size(), 0 );
		if ( nNow <= 0 )
			return false;
		bytes = bytes.subspan( static_cast<size_t>( nNow ) );
	}
	return true;
}

std::string CFakeEngine::Receive()
{
	uint8_t header[12];
	if ( !ReceiveBytes( header ) )
		return "";
	EXPECT_EQ( header[4], 0 );
	EXPECT_EQ( header[5], 2 );
	EXPECT_EQ( header[8] + header[9], 0 ); // nothing that a console sends here is long
	m_Received.resize( static_cast<size_t>( header[10] << 8 | header[11] ) );
	EXPECT_TRUE( ReceiveBytes( m_Received ) );
	return { header, header + 4 };
}

void CFakeEngine::ExpectGreetingAndStart()
{
	EXPECT_EQ( Receive(), "HELO" );
	ASSERT_GE( m_Received.size(), 16u );
	EXPECT_EQ(
		std::vector<uint8_t>( m_Received.begin(), m_Received.begin() + 4 ), ( std::vector<uint8_t>{ 0, 0, 0, 2 } ) );
	SendHello();
	EXPECT_EQ( Receive(), "KSTO" );
	EXPECT_EQ( m_Received, ( std::vector<uint8_t>{ 1, 0, 0 } ) );
}

void CFakeEngine::WaitForHangUp()
{
	while ( !Receive().empty() )
	{
	}
}
