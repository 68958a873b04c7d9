// A 'PMPF' block of names: the decoder and its model against a slow reader that shares no code with them. Both must
// agree on names, descriptions and their lines, parents, equal names, groups, wanted ids and warnings; what is shown of
// a text holds no control character and is no longer than it may be.
//
// Input: u8 group mode, then the block's data.
#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "keptwarnings.h"
#include "memorylimit.h"
#include "miniprofiler/miniprofilerdecoder.h"
#include "miniprofiler/miniprofilermodel.h"
#include "miniprofiler/miniprofilertooltip.h"
#include "require.h"
#include "text/showntext.h"

namespace
{
QString Converted( const std::string &text )
{
	return QString::fromUtf8( text.data(), static_cast<int>( text.size() ) );
}

// -- The slow reader

struct SlowName
{
	std::string m_Name;
	std::string m_Description;
	uint64_t m_nParent = 0;
	bool m_bNamed = false;
	bool m_bDuplicate = false;

	std::vector<std::string> Lines() const
	{
		std::vector<std::string> lines( 1 );
		for ( const char ch : m_Description )
			if ( ch == '\n' )
				lines.emplace_back();
			else
				lines.back() += ch;
		lines.pop_back(); // what follows the last line feed
		if ( lines.size() > 2 )
			for ( char &ch : lines[2] )
				ch = ch >= 'A' && ch <= 'Z' ? static_cast<char>( ch + 32 ) : ch == '\\' ? '/' : ch;
		return lines;
	}
	std::string Line( size_t nIndex ) const
	{
		const auto lines = Lines();
		return nIndex < lines.size() ? lines[nIndex] : std::string();
	}
};

class CSlowReader
{
public:
	explicit CSlowReader( std::string data )
		: m_Data( std::move( data ) )
	{
		if ( m_Data.size() < 12 )
		{
			m_Warnings.push_back( "Misaligned Miniprofiler name data stream\n" );
			return;
		}
		const auto nCount = static_cast<int32_t>( Number( 8, 4 ) );
		m_nAt = 12;
		for ( int32_t i = 0; i < nCount && m_nAt < m_Data.size(); i++ )
			if ( !ReadName() )
			{
				m_Warnings.push_back( "no end of string in Miniprofiler name data stream\n" );
				return;
			}
		m_nNamesSent = nCount;
		if ( m_nAt != m_Data.size() )
			m_Warnings.push_back( "Misaligned Miniprofiler name data stream\n" );
	}

	std::map<uint64_t, SlowName> m_Names;
	std::vector<uint64_t> m_Wanted;
	std::vector<std::string> m_Warnings;
	int32_t m_nNamesSent = 0;

private:
	uint64_t Number( size_t nOffset, size_t nBytes ) const
	{
		uint64_t nValue = 0;
		for ( size_t i = nBytes; i > 0; i-- )
			nValue = nValue << 8 | static_cast<uint8_t>( m_Data.at( nOffset + i - 1 ) );
		return nValue;
	}

	SlowName &Touch( uint64_t nId )
	{
		if ( !m_Names.contains( nId ) )
			m_Wanted.push_back( nId );
		return m_Names[nId];
	}

	bool ReadName()
	{
		const size_t nName = m_nAt + 16;
		const size_t nNameEnd = m_Data.find( '\0', nName );
		if ( nName >= m_Data.size() || nNameEnd == std::string::npos )
			return false;
		const size_t nDescriptionEnd = m_Data.find( '\0', nNameEnd + 1 );
		if ( nDescriptionEnd == std::string::npos )
			return false;
		const uint64_t nId = Number( m_nAt, 8 ), nParent = Number( m_nAt + 8, 8 );
		m_nAt = nDescriptionEnd + 1;
		if ( nId == 0 )
			return true;
		SlowName &record = Touch( nId );
		record.m_Name = m_Data.substr( nName, nNameEnd - nName );
		record.m_Description = m_Data.substr( nNameEnd + 1, nDescriptionEnd - nNameEnd - 1 );
		record.m_bNamed = true;
		for ( auto &[nOther, other] : m_Names )
			if ( nOther != nId && other.m_bNamed && Converted( other.m_Name ) == Converted( record.m_Name ) )
				record.m_bDuplicate = other.m_bDuplicate = true;
		if ( nParent != 0 )
		{
			Touch( nParent );
			m_Names[nId].m_nParent = nParent;
		}
		return true;
	}

	std::string m_Data;
	size_t m_nAt = 0;
};

// -- Comparison

void CheckShown( const QString &text, int nMaxLength )
{
	Require( text.size() <= nMaxLength, "the length of a shown text" );
	for ( const QChar character : text )
	{
		const ushort nUnit = character.unicode();
		Require( nUnit >= 0x20 && ( nUnit < 0x7F || nUnit > 0x9F ), "a shown text has no control characters" );
		Require( nUnit < 0x202A || nUnit > 0x202E, "a shown text changes no direction" );
	}
}

void CompareRecord( CQMiniProfilerRecord &record, const SlowName &expected )
{
	Require( record.Name() == Converted( expected.m_Name ), "the name" );
	Require( record.Description() == Converted( expected.m_Description ), "the description" );
	const auto lines = expected.Lines();
	Require( record.LineCount() == lines.size(), "the number of lines" );
	for ( size_t i = 0; i < CMiniProfilerDescription::KNOWN_LINES; i++ )
		Require( record.Line( i ) == ( i < lines.size() ? lines[i] : std::string() ), "a known line" );
	size_t nLine = 0;
	record.HasLine(
		[&]( std::string_view line )
		{
			Require( line == lines.at( nLine++ ), "a line" );
			return false;
		} );
	Require( nLine == lines.size(), "lines without end" );
	Require( record.HasFlag( MINIPROFILER_ROW_DUPLICATE ) == expected.m_bDuplicate, "whether the name is another's" );
	Require( ( record.m_pStaticParent ? record.m_pStaticParent->Id() : 0 ) == expected.m_nParent, "the static parent" );
	CheckShown( ShownText( record.Name(), MINIPROFILER_MAX_DRAWN_NAME ), MINIPROFILER_MAX_DRAWN_NAME );
	CheckShown( ShownText( record.Name() ), 4 * record.Name().size() );
	for ( const QString &line : MiniProfilerToolTip( record.Description() ).split( '\n' ) )
		CheckShown( line, 2000 ); // markup makes some characters longer
}

void Compare( CMiniProfilerModel &model, CSlowReader &slow )
{
	Require( CKeptWarnings::Texts() == slow.m_Warnings, "the warnings" );
	Require( model.TakeWantedIds() == slow.m_Wanted, "the wanted ids" );
	Require( model.Counters().m_nNamesSent == slow.m_nNamesSent, "the names sent" );
	Require( model.Records().size() == slow.m_Names.size(), "the number of records" );
	for ( const auto &pRecord : model.Records() )
		CompareRecord( *pRecord, slow.m_Names.at( pRecord->Id() ) );
}

size_t Separators( const std::string &path )
{
	size_t nCount = 0;
	for ( size_t i = 0; i < path.size(); i++ )
	{
		nCount += path[i] == '/' || path[i] == '\\' || path[i] == ':';
		i += path.compare( i, 2, "::" ) == 0;
	}
	return nCount;
}

// A record is in the group whose key is its whole path, as deep as the path has components.
void CompareGroups( CMiniProfilerModel &model, const CSlowReader &slow, MiniProfilerGroupMode mode )
{
	model.SetHierarchy( mode, MiniProfilerLeafMode::StaticTree );
	model.TakeChanges();
	for ( const auto &pRecord : model.Records() )
	{
		const SlowName &name = slow.m_Names.at( pRecord->Id() );
		size_t nLevels = 1;
		std::string path = name.Line( mode == MiniProfilerGroupMode::Function  ? 1
									  : mode == MiniProfilerGroupMode::Project ? 4
																			   : 0 );
		if ( mode != MiniProfilerGroupMode::Budget )
			nLevels = std::min<size_t>( Separators( path ) + 1, 64 );
		// A byte order mark alone is no budget's name.
		const bool bNone = mode == MiniProfilerGroupMode::Budget ? Converted( path ).isEmpty() : path.empty();
		Require( !pRecord->m_pGroup == bNone, "whether there is a group" );
		if ( bNone )
			continue;
		Require( pRecord->m_pGroup == model.FindGroup( Converted( path ) ), "the group" );
		size_t nFound = 0;
		for ( const CMiniProfilerGroup *pGroup = pRecord->m_pGroup; pGroup; pGroup = pGroup->Parent() )
			nFound++;
		Require( nFound <= nLevels, "the depth of a group" ); // less where two paths look the same once converted
	}
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	CKeptWarnings::Begin();
	if ( nSize < 1 )
		return 0;

	std::vector<uint8_t> chunk( 16 );
	chunk[8] = static_cast<uint8_t>( MiniProfilerSubrecord::Names );
	chunk.insert( chunk.end(), pData + 1, pData + nSize );
	for ( size_t i = 0; i < 4; i++ )
		chunk[12 + i] = static_cast<uint8_t>( chunk.size() >> ( 8 * i ) );

	CMiniProfilerModel model( 1 );
	CSlowReader slow( std::string( pData + 1, pData + nSize ) );
	{
		const CMemoryLimit limit( chunk.size() );
		Require( !DecodeMiniProfilerChunk( chunk, model ), "names are no data" );
	}
	Compare( model, slow );
	constexpr MiniProfilerGroupMode MODES[] = {
		MiniProfilerGroupMode::Budget, MiniProfilerGroupMode::Function, MiniProfilerGroupMode::Project };
	CompareGroups( model, slow, MODES[pData[0] % 3] );
	return 0;
}
