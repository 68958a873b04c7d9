// 'PCAT' and 'PCPU': the views agree with a slow reader of the same layout, and what is written from a decoded payload
// decodes to the same.
//
// The first byte of an input chooses the chunk (even: 'PCAT', odd: 'PCPU'), the rest is its payload.
#include <bit>
#include <optional>
#include <string>
#include <vector>

#include "require.h"
#include "wire/budgetchunks.h"

namespace
{
using wire::CCategoriesView;
using wire::CountProblem;
using wire::CSampleView;
using Payload = std::span<const uint8_t>;

// Big-endian; none when it reaches past the payload.
std::optional<uint32_t> NumberAt( Payload payload, uint64_t nOffset )
{
	if ( nOffset + 4 > payload.size() )
		return std::nullopt;
	uint32_t nValue = 0;
	for ( uint64_t i = nOffset; i < nOffset + 4; i++ )
		nValue = nValue * 256 + payload[i];
	return nValue;
}

struct SlowCategory
{
	std::string m_Name;
	std::vector<uint8_t> m_Colour;

	friend bool operator==( const SlowCategory &, const SlowCategory & ) = default;
};

// Byte by byte, and stopping where the payload does.
std::optional<std::vector<SlowCategory>> SlowCategories( Payload payload )
{
	const std::optional<uint32_t> nCount = NumberAt( payload, 0 );
	if ( !nCount || *nCount > 4096 )
		return std::nullopt;
	std::vector<SlowCategory> categories;
	uint64_t nAt = 4;
	for ( uint32_t i = 0; i < *nCount; i++ )
	{
		SlowCategory category;
		bool bInName = true;
		for ( int nByte = 0; nByte < 68; nByte++, nAt++ )
		{
			if ( nAt >= payload.size() )
				return std::nullopt;
			const uint8_t nValue = payload[nAt];
			bInName = bInName && nByte < 64 && nValue != 0;
			if ( bInName )
				category.m_Name += static_cast<char>( nValue );
			else if ( nByte >= 64 && nByte < 67 )
				category.m_Colour.push_back( nValue );
		}
		categories.push_back( category );
	}
	return categories;
}

std::vector<SlowCategory> FromView( const CCategoriesView &view )
{
	std::vector<SlowCategory> categories;
	for ( uint32_t i = 0; i < view.Count(); i++ )
	{
		const wire::Category category = view[i];
		categories.push_back(
			{ std::string( category.m_Name ), { category.m_nRed, category.m_nGreen, category.m_nBlue } } );
	}
	return categories;
}

void CheckCategories( Payload payload )
{
	const CCategoriesView view( payload );
	const auto expected = SlowCategories( payload );
	Require( expected.has_value() == ( view.Problem() == CountProblem::None ), "both readers accept the same chunks" );
	Require( ( view.Problem() == CountProblem::NoCount ) == ( payload.size() < 4 ),
		"only a chunk without a count has none" );
	if ( payload.size() >= 4 )
		Require( view.Count() == NumberAt( payload, 0 ), "the declared count is known, also when it is refused" );
	if ( !expected )
		return;
	Require( FromView( view ) == *expected, "both readers see the same categories" );

	std::vector<wire::Category> categories;
	for ( uint32_t i = 0; i < view.Count(); i++ )
		categories.push_back( view[i] );
	std::vector<uint8_t> written( wire::CategoriesSize( view.Count() ) );
	Require( wire::WriteCategories( written, categories ) == written.size(), "what was read can be written" );
	const CCategoriesView readBack( written );
	Require( readBack.Problem() == CountProblem::None, "what was written can be read" );
	for ( uint32_t i = 0; i < view.Count(); i++ )
	{
		const std::string_view name = readBack[i].m_Name;
		Require( view[i].m_Name.starts_with( name ), "a written name is the front of the name" );
		Require( name.size() == view[i].m_Name.size() || ( name.size() >= 60 && name.size() <= 63 ),
			"only a name that does not fit is cut, and by one character" );
		categories[i].m_Name = name;
	}
	std::vector<uint8_t> again( written.size() );
	wire::WriteCategories( again, categories );
	Require( again == written, "writing, reading and writing gives the same bytes" );
}

void CheckSample( Payload payload )
{
	const CSampleView view( payload );
	std::vector<uint32_t> expected;
	const auto nCount = NumberAt( payload, 0 );
	bool bFits = payload.size() >= 12;
	for ( uint64_t i = 0; bFits && i < *nCount; i++ )
	{
		const auto nValue = NumberAt( payload, 12 + 4 * i );
		bFits = nValue.has_value();
		if ( bFits )
			expected.push_back( *nValue );
	}
	Require( bFits == ( view.Problem() == CountProblem::None ), "both readers accept the same chunks" );
	Require( ( view.Problem() == CountProblem::NoCount ) == ( payload.size() < 12 ),
		"only a chunk without a count has none" );
	if ( payload.size() >= 12 )
		Require( view.Count() == *nCount, "the declared count is known, also when it is refused" );
	if ( !bFits )
		return;
	std::vector<uint32_t> values( view.Count() );
	view.CopyValues( values );
	Require( values == expected, "both readers see the same values" );
	for ( uint32_t i = 0; i < view.Count(); i++ )
		Require( view.Value( i ) == expected[i], "a value is the same alone and among all" );
	Require( view.IsContinuation() == ( NumberAt( payload, 4 ) == 0u ), "a mark of 0 continues" );
	Require(
		std::bit_cast<uint32_t>( view.FrameRate() ) == NumberAt( payload, 8 ), "the frame rate is as it was sent" );

	std::vector<uint8_t> written( wire::SampleSize( view.Count() ) );
	Require( wire::WriteSample( written, view.IsContinuation(), view.FrameRate(), values ) == written.size(),
		"what was read can be written" );
	std::vector<uint8_t> normal( payload.begin(), payload.begin() + static_cast<ptrdiff_t>( written.size() ) );
	for ( const size_t i : { 4u, 5u, 6u, 7u } )
		normal[i] = i == 7 && !view.IsContinuation();
	Require( written == normal, "what is written is the payload with a normal mark" );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	if ( nSize == 0 )
		return 0;
	const Payload payload( pData + 1, nSize - 1 );
	if ( pData[0] % 2 == 0 )
		CheckCategories( payload );
	else
		CheckSample( payload );
	return 0;
}
