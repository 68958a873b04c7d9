#include "testconsole.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <linux/filter.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <bit>
#include <cstring>

#include "wire/controlchunks.h"
#include "wire/sessionchunks.h"

namespace
{
using SteadyClock = std::chrono::steady_clock;
constexpr auto DEADLINE = std::chrono::seconds( 60 ); // only a fault reaches it

// For what the engine is waited for while it goes on sending something else.
bool IsInTime( SteadyClock::time_point begin )
{
	if ( SteadyClock::now() < begin + DEADLINE )
		return true;
	ADD_FAILURE() << "the engine sends other things only";
	return false;
}

uint64_t Big( std::span<const uint8_t> bytes, size_t nAt, size_t nBytes )
{
	uint64_t nValue = 0;
	for ( size_t i = 0; i < nBytes; i++ )
		nValue = nValue << 8 | bytes[nAt + i];
	return nValue;
}

uint64_t Little( std::span<const uint8_t> bytes, size_t nAt, size_t nBytes )
{
	uint64_t nValue = 0;
	for ( size_t i = nBytes; i-- > 0; )
		nValue = nValue << 8 | bytes[nAt + i];
	return nValue;
}

std::string TextAt( std::span<const uint8_t> bytes, size_t nAt )
{
	std::string text;
	while ( nAt < bytes.size() && bytes[nAt] )
		text += static_cast<char>( bytes[nAt++] );
	return text;
}

void ReadData( std::span<const uint8_t> bytes, size_t nAt, size_t nEnd, ProfilerFrame &frame )
{
	frame.m_bData = true;
	frame.m_nMark = static_cast<uint32_t>( Little( bytes, nAt, 4 ) );
	frame.m_nLayout = static_cast<uint32_t>( Little( bytes, nAt + 4, 4 ) );
	frame.m_nZero = Little( bytes, nAt + 8, 8 );
	frame.m_nRegistered = static_cast<uint32_t>( Little( bytes, nAt + 16, 4 ) );
	frame.m_nTransmitted = static_cast<uint32_t>( Little( bytes, nAt + 20, 4 ) );
	EXPECT_EQ( ( nEnd - nAt - 24 ) % 36, 0u );
	for ( size_t i = nAt + 24; i + 36 <= nEnd; i += 36 )
		frame.m_Entries.push_back( { Little( bytes, i + 4, 8 ), Little( bytes, i + 12, 8 ), Little( bytes, i + 20, 8 ),
			Little( bytes, i + 28, 8 ) } );
}

void ReadNames( std::span<const uint8_t> bytes, size_t nAt, size_t nEnd, ProfilerFrame &frame )
{
	frame.m_bNames = true;
	frame.m_nFrequency = Little( bytes, nAt, 8 );
	const uint64_t nCount = Little( bytes, nAt + 8, 4 );
	nAt += 12;
	for ( uint64_t i = 0; i < nCount && nAt + 16 < nEnd; i++ )
	{
		ProfilerName name{ Little( bytes, nAt, 8 ), Little( bytes, nAt + 8, 8 ), TextAt( bytes, nAt + 16 ), {} };
		nAt += 16 + name.m_Name.size() + 1;
		name.m_Description = TextAt( bytes, nAt );
		nAt += name.m_Description.size() + 1;
		frame.m_Names.push_back( name );
	}
	EXPECT_EQ( frame.m_Names.size(), nCount );
	EXPECT_EQ( nAt, nEnd );
}
} // namespace

uint64_t Sample::Total() const
{
	uint64_t nTotal = 0;
	for ( const uint32_t nValue : m_Values )
		nTotal += nValue;
	return nTotal;
}

std::vector<CategoryRecord> ReadCategories( const Chunk &chunk )
{
	std::vector<CategoryRecord> records;
	const std::span<const uint8_t> bytes = chunk.m_Payload;
	const size_t nCount = bytes.size() < 4 ? 0 : Big( bytes, 0, 4 );
	EXPECT_EQ( bytes.size(), 4 + 68 * nCount );
	for ( size_t i = 0; i < nCount && 4 + 68 * ( i + 1 ) <= bytes.size(); i++ )
	{
		CategoryRecord record{ TextAt( bytes, 4 + 68 * i ), {} };
		std::memcpy( record.m_Colour, bytes.data() + 4 + 68 * i + 64, 4 );
		records.push_back( record );
	}
	return records;
}

Sample ReadSample( const Chunk &chunk )
{
	Sample sample;
	const std::span<const uint8_t> bytes = chunk.m_Payload;
	const size_t nCount = bytes.size() < 12 ? 0 : Big( bytes, 0, 4 );
	EXPECT_EQ( bytes.size(), 12 + 4 * nCount );
	sample.m_nMark = static_cast<uint32_t>( Big( bytes, 4, 4 ) );
	sample.m_flFrameRate = std::bit_cast<float>( static_cast<uint32_t>( Big( bytes, 8, 4 ) ) );
	for ( size_t i = 0; i < nCount; i++ )
		sample.m_Values.push_back( static_cast<uint32_t>( Big( bytes, 12 + 4 * i, 4 ) ) );
	return sample;
}

ProfilerFrame ReadProfilerFrame( const Chunk &chunk )
{
	ProfilerFrame frame;
	const std::span<const uint8_t> bytes = chunk.m_Payload;
	frame.m_nServiceTicks = Little( bytes, 0, 8 );
	for ( size_t nAt = 8; nAt < bytes.size(); )
	{
		const uint64_t nKind = Little( bytes, nAt, 4 );
		const size_t nEnd = Little( bytes, nAt + 4, 4 );
		if ( nEnd <= nAt || nEnd > bytes.size() )
		{
			ADD_FAILURE() << "a block at " << nAt << " ends at " << nEnd << " of " << bytes.size();
			break;
		}
		if ( nKind == 0 )
			ReadData( bytes, nAt + 8, nEnd, frame );
		else if ( nKind == 1 )
			ReadNames( bytes, nAt + 8, nEnd, frame );
		else
			ADD_FAILURE() << "a block of kind " << nKind;
		nAt = nEnd;
	}
	return frame;
}

CTestConsole::CTestConsole()
	: m_nSocket( socket( AF_INET, SOCK_STREAM, 0 ) )
{
}

CTestConsole::CTestConsole( uint16_t nPort )
	: CTestConsole()
{
	Connect( nPort );
}

void CTestConsole::Connect( uint16_t nPort )
{
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_port = htons( nPort );
	address.sin_addr.s_addr = htonl( INADDR_LOOPBACK );
	EXPECT_EQ( connect( m_nSocket, reinterpret_cast<sockaddr *>( &address ), sizeof( address ) ), 0 )
		<< strerror( errno );
}

CTestConsole::~CTestConsole()
{
	if ( m_nSocket >= 0 )
		close( m_nSocket );
}

void CTestConsole::Abort()
{
	const linger reset{ 1, 0 };
	setsockopt( m_nSocket, SOL_SOCKET, SO_LINGER, &reset, sizeof( reset ) );
	close( m_nSocket );
	m_nSocket = -1;
}

void CTestConsole::SendBytes( std::span<const uint8_t> bytes )
{
	while ( !bytes.empty() )
	{
		const ssize_t nSent = send( m_nSocket, bytes.data(), bytes.size(), MSG_NOSIGNAL );
		if ( nSent <= 0 )
			return; // the engine hung up; what the test expects of that it looks for itself
		bytes = bytes.subspan( static_cast<size_t>( nSent ) );
	}
}

void CTestConsole::SendText( std::string_view text )
{
	SendBytes( { reinterpret_cast<const uint8_t *>( text.data() ), text.size() } );
}

void CTestConsole::Send( uint32_t nType, std::span<const uint8_t> payload, uint16_t nVersion )
{
	std::vector<uint8_t> bytes( wire::CHUNK_HEADER_SIZE );
	wire::WriteChunkHeader( std::span<uint8_t, wire::CHUNK_HEADER_SIZE>( bytes.data(), wire::CHUNK_HEADER_SIZE ),
		{ nType, nVersion, static_cast<uint32_t>( payload.size() ) } );
	bytes.insert( bytes.end(), payload.begin(), payload.end() );
	SendBytes( bytes );
}

Chunk CTestConsole::Greet( std::string_view token )
{
	Send(
		wire::CHUNK_HELLO, wire::WriteHello( { wire::PROTOCOL_VERSION, 0, 0, "test console", std::string( token ) } ) );
	return ReceiveType( wire::CHUNK_HELLO );
}

void CTestConsole::WantBudgets( bool bOn )
{
	Send( wire::CHUNK_SAMPLING, wire::WriteSamplingRequest( { bOn, {} } ) );
}

void CTestConsole::WantScopes( bool bOn )
{
	Send( wire::CHUNK_MINIPROFILER_CONTROL, wire::WriteMiniProfilerControl( bOn ) );
}

void CTestConsole::WantNames( std::span<const uint64_t> ids )
{
	std::vector<uint8_t> payload;
	for ( const uint64_t nId : ids )
	{
		for ( int i = 0; i < 8; i++ )
			payload.push_back( static_cast<uint8_t>( nId >> 8 * i ) );
	}
	Send( wire::CHUNK_MINIPROFILER_NAMES, payload );
}

void CTestConsole::Command( std::string_view line )
{
	Send( wire::CHUNK_COMMAND, { reinterpret_cast<const uint8_t *>( line.data() ), line.size() } );
}

bool CTestConsole::HasBytes() const
{
	return WaitForBytes( std::chrono::milliseconds( 0 ) );
}

bool CTestConsole::WaitForBytes( std::chrono::milliseconds time ) const
{
	pollfd descriptor{ m_nSocket, POLLIN, 0 };
	return poll( &descriptor, 1, static_cast<int>( time.count() ) ) > 0;
}

void CTestConsole::GoSilent()
{
	sock_filter dropAll = BPF_STMT( BPF_RET | BPF_K, 0 );
	const sock_fprog program{ 1, &dropAll };
	EXPECT_EQ( setsockopt( m_nSocket, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof( program ) ), 0 )
		<< strerror( errno );
}

bool CTestConsole::ReceiveBytes( std::span<uint8_t> bytes )
{
	while ( !bytes.empty() )
	{
		if ( !WaitForBytes( DEADLINE ) )
		{
			ADD_FAILURE() << "the engine sends nothing";
			return false;
		}
		const ssize_t nReceived = recv( m_nSocket, bytes.data(), bytes.size(), 0 );
		if ( nReceived <= 0 )
			return false;
		bytes = bytes.subspan( static_cast<size_t>( nReceived ) );
	}
	return true;
}

std::optional<Chunk> CTestConsole::Receive()
{
	uint8_t header[wire::CHUNK_HEADER_SIZE];
	if ( !ReceiveBytes( header ) )
		return std::nullopt;
	Chunk chunk;
	EXPECT_EQ( wire::ReadChunkHeader( header, chunk.m_Header ), wire::HeaderProblem::None );
	EXPECT_EQ( chunk.m_Header.m_nVersion, 2 );
	chunk.m_Payload.resize( chunk.m_Header.m_nLength );
	if ( !ReceiveBytes( chunk.m_Payload ) )
		return std::nullopt;
	return chunk;
}

Chunk CTestConsole::ReceiveType( uint32_t nType )
{
	const auto begin = SteadyClock::now();
	for ( std::optional<Chunk> chunk; IsInTime( begin ) && ( chunk = Receive() ).has_value(); )
	{
		if ( chunk->m_Header.m_nType == nType )
			return *chunk;
	}
	ADD_FAILURE() << "the engine sent no " << wire::DescribeChunkType( nType ).m_Text;
	return {};
}

std::string CTestConsole::ReceiveLine()
{
	const Chunk chunk = ReceiveType( wire::CHUNK_PRINT );
	return chunk.m_Payload.size() < 4 ? std::string()
									  : std::string( chunk.m_Payload.begin() + 4, chunk.m_Payload.end() );
}

std::vector<Chunk> CTestConsole::ReceiveUntilLine( std::string_view text )
{
	std::vector<Chunk> chunks;
	const auto begin = SteadyClock::now();
	for ( std::optional<Chunk> chunk; IsInTime( begin ) && ( chunk = Receive() ).has_value(); )
	{
		const std::string_view payload{
			reinterpret_cast<const char *>( chunk->m_Payload.data() ), chunk->m_Payload.size() };
		if ( chunk->m_Header.m_nType == wire::CHUNK_PRINT && payload.find( text ) != std::string_view::npos )
			return chunks;
		chunks.push_back( *chunk );
	}
	ADD_FAILURE() << "the engine sent no line \"" << text << '"';
	return chunks;
}

bool CTestConsole::IsEnded()
{
	while ( Receive() )
	{
	}
	return !testing::Test::HasFailure();
}
