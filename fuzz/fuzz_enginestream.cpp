// What an engine sends to the console: wherever the stream is cut, the same greeting, chunks, lines and refusal come
// out of it, and they are what a reader finds that sees the whole stream. Lines are fit to be shown.
//
// The first byte of an input chooses the cuts and, by its highest bit, whether the console has a token; the rest is the
// stream.
#include <string>
#include <vector>

#include "displaytext.h"
#include "enginestream.h"
#include "keel0/memalloc.h"
#include "memorylimit.h"
#include "require.h"

namespace
{
using Bytes = std::span<const uint8_t>;

const std::string TOKEN = "secret";
constexpr int SHOWN = 200;

// An event as a text: what it is and everything that belongs to it.
using Events = std::vector<std::string>;

std::string Text( Bytes bytes )
{
	return { reinterpret_cast<const char *>( bytes.data() ), bytes.size() };
}

std::string ChunkEvent( Bytes chunk )
{
	return "chunk " + Text( chunk );
}

uint64_t BigEndian( Bytes bytes )
{
	uint64_t nValue = 0;
	for ( const uint8_t nByte : bytes )
		nValue = nValue * 256 + nByte;
	return nValue;
}

// The front of a text without a broken character at its end, as the layout of texts has it.
std::string Front( const std::string &text, size_t nMax )
{
	if ( text.size() <= nMax )
		return text;
	for ( size_t nEnd = nMax; nEnd + 3 >= nMax && nEnd > 0; nEnd-- )
		if ( ( static_cast<uint8_t>( text[nEnd] ) & 0xC0 ) != 0x80 )
			return text.substr( 0, nEnd );
	return text.substr( 0, nMax );
}

// The greeting, read as plainly as can be.
std::string ExpectedGreeting( Bytes payload, const std::string &token )
{
	if ( payload.size() < 16 || BigEndian( payload.first( 4 ) ) != 2 )
		return "foreign";
	std::vector<std::string> texts( 1 );
	for ( const uint8_t nByte : payload.subspan( 16 ) )
	{
		if ( nByte == 0 )
			texts.emplace_back();
		else
			texts.back() += static_cast<char>( nByte );
	}
	texts.resize( 3 );
	if ( !texts[2].empty() && texts[2][0] != '\n' )
		return "turned away";
	if ( !token.empty() && texts[1] != token )
		return "turned away";
	return "greeted " + std::to_string( BigEndian( payload.subspan( 4, 4 ) ) ) + " " + Front( texts[0], 255 );
}

Events Expected( Bytes stream, const std::string &token )
{
	Events events;
	while ( stream.size() >= 12 )
	{
		const uint64_t nLength = BigEndian( stream.subspan( 8, 4 ) );
		const bool bIsHello = Text( stream.first( 4 ) ) == "HELO" && nLength <= 4096;
		if ( BigEndian( stream.subspan( 6, 2 ) ) != 0 || nLength > 64 * 1024 * 1024 || ( events.empty() && !bIsHello ) )
		{
			events.push_back( "foreign" );
			return events;
		}
		if ( stream.size() < 12 + nLength )
			return events;
		const Bytes chunk = stream.first( 12 + nLength );
		stream = stream.subspan( chunk.size() );
		events.push_back( events.empty() ? ExpectedGreeting( chunk.subspan( 12 ), token ) : ChunkEvent( chunk ) );
		if ( events.size() == 1 && events[0].rfind( "greeted", 0 ) != 0 )
			return events;
	}
	return events;
}

bool IsFitForOneLine( const QString &line )
{
	for ( const QChar character : line )
	{
		const ushort n = character.unicode();
		const bool bControl = n < 0x20 || ( n >= 0x7F && n < 0xA0 );
		const bool bDirection = ( n >= 0x202A && n <= 0x202E ) || ( n >= 0x2066 && n <= 0x2069 ) || n == 0x061C ||
								n == 0x200E || n == 0x200F;
		if ( bControl || bDirection || n == 0x2028 || n == 0x2029 )
			return false;
	}
	return true;
}

void CheckShown( const QString &text )
{
	const QString line = ToDisplayLine( text, SHOWN );
	Require( line.size() <= SHOWN, "a line is cut for drawing" );
	Require( IsFitForOneLine( line ), "nothing in a line moves or hides another part" );
	Require( !line.isEmpty() || text.isEmpty(), "a text does not disappear" );
}

void CheckPrint( const wire::ChunkHeader &header, Bytes payload )
{
	if ( header.m_nType != wire::CHUNK_PRINT )
		return;
	const std::optional<wire::PrintLine> line = wire::ReadPrint( payload );
	Require( line.has_value() == ( payload.size() >= 4 ), "a line needs its severity and nothing else" );
	if ( !line )
		return;
	const QString text = QString::fromUtf8( line->m_Text.data(), static_cast<int>( line->m_Text.size() ) );
	int nLength = 0;
	for ( const QString &part : SplitLines( text ) )
	{
		Require( !part.contains( '\n' ) && !part.contains( '\r' ), "a line is one line" );
		CheckShown( part );
		nLength += part.size();
	}
	Require( nLength + text.count( '\n' ) + text.count( '\r' ) == text.size(), "only line ends are taken away" );
}

void Feed( CEngineStream &stream, Bytes piece, Events &events )
{
	for ( ;; )
	{
		switch ( stream.Feed( piece ) )
		{
			case CEngineStream::Event::NeedMore:
				Require( piece.empty(), "all bytes of an unfinished chunk are taken" );
				return;
			case CEngineStream::Event::Greeted:
				events.push_back(
					"greeted " + std::to_string( stream.PeerHello().m_nProcessId ) + " " + stream.PeerHello().m_Name );
				CheckShown( QString::fromStdString( stream.PeerHello().m_Name ) );
				break;
			case CEngineStream::Event::Chunk:
			{
				const wire::ChunkHeader header = stream.Header();
				uint8_t *pBlock = stream.TakeBlock();
				const Bytes chunk( pBlock, wire::CHUNK_HEADER_SIZE + header.m_nLength );
				events.push_back( ChunkEvent( chunk ) );
				CheckPrint( header, chunk.subspan( wire::CHUNK_HEADER_SIZE ) );
				g_pMemAlloc->Free( pBlock );
				break;
			}
			case CEngineStream::Event::Refused:
				Require( IsFitForOneLine( stream.Problem() ) && !stream.Problem().isEmpty(), "a refusal is a line" );
				events.push_back( stream.Why() == CEngineStream::Refusal::TurnedAway ? "turned away" : "foreign" );
				return;
		}
	}
}

// nPattern 0: in one piece; 1: byte by byte; else pieces of changing length.
Events Read( Bytes bytes, uint32_t nPattern, const std::string &token )
{
	wire::Hello own;
	own.m_Token = token;
	CEngineStream stream( own );
	Events events;
	uint32_t nState = nPattern;
	while ( !bytes.empty() && stream.Why() == CEngineStream::Refusal::None )
	{
		nState = nState * 1664525 + 1013904223;
		const size_t nWanted = nPattern == 0 ? bytes.size() : nPattern == 1 ? 1 : ( nState >> 16 ) % 40;
		const size_t nPiece = std::min( nWanted, bytes.size() );
		Feed( stream, bytes.first( nPiece ), events );
		bytes = bytes.subspan( nPiece );
	}
	return events;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	if ( nSize == 0 )
		return 0;
	const Bytes bytes( pData + 1, nSize - 1 );
	const std::string token = pData[0] & 0x80 ? TOKEN : std::string();
	const Events expected = Expected( bytes, token );
	for ( const uint32_t nPattern : { 0u, 1u, 2u + ( pData[0] & 0x7F ) } )
	{
		const CMemoryLimit limit( nSize );
		Require( Read( bytes, nPattern, token ) == expected, "a cut stream gives the events of the whole one" );
	}
	return 0;
}
