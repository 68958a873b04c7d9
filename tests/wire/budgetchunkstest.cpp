#include "wire/budgetchunks.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

namespace
{
using testing::ElementsAre;
using testing::ElementsAreArray;
using wire::Category;
using wire::CCategoriesView;
using wire::CountProblem;
using wire::CSampleView;
using Bytes = std::vector<uint8_t>;

void AppendBigEndian( Bytes &bytes, uint32_t nValue )
{
	for ( const int nShift : { 24, 16, 8, 0 } )
		bytes.push_back( static_cast<uint8_t>( nValue >> nShift ) );
}

// A category record as the layout says: 64 bytes of name, then the colour and an unused byte.
void AppendRecord( Bytes &bytes, const std::string &name, uint8_t r, uint8_t g, uint8_t b, uint8_t nUnused = 0xEE )
{
	ASSERT_LE( name.size(), 64u );
	bytes.insert( bytes.end(), name.begin(), name.end() );
	bytes.insert( bytes.end(), 64 - name.size(), 0 );
	bytes.insert( bytes.end(), { r, g, b, nUnused } );
}

Bytes CountAnd( uint32_t nCount, size_t nMoreBytes )
{
	Bytes bytes;
	AppendBigEndian( bytes, nCount );
	bytes.resize( bytes.size() + nMoreBytes );
	return bytes;
}

void ExpectCategory( const Category &category, std::string_view name, int r, int g, int b )
{
	EXPECT_EQ( category.m_Name, name );
	EXPECT_EQ( category.m_nRed, r );
	EXPECT_EQ( category.m_nGreen, g );
	EXPECT_EQ( category.m_nBlue, b );
}

TEST( CategoriesChunk, IsReadRecordByRecord )
{
	Bytes payload;
	AppendBigEndian( payload, 3 );
	AppendRecord( payload, "Physics", 1, 2, 3 );
	AppendRecord( payload, "", 255, 254, 253 );
	AppendRecord( payload, std::string( "Audio\0behind", 12 ), 0, 128, 7 );
	const CCategoriesView view( payload );
	ASSERT_EQ( view.Problem(), CountProblem::None );
	ASSERT_EQ( view.Count(), 3u );
	ExpectCategory( view[0], "Physics", 1, 2, 3 );
	ExpectCategory( view[1], "", 255, 254, 253 );
	ExpectCategory( view[2], "Audio", 0, 128, 7 );
}

TEST( CategoriesChunk, ANameWithoutATerminatorEndsWithItsField )
{
	Bytes payload;
	AppendBigEndian( payload, 1 );
	AppendRecord( payload, std::string( 64, 'n' ), 'r', 'g', 'b' );
	ExpectCategory( CCategoriesView( payload )[0], std::string( 64, 'n' ), 'r', 'g', 'b' );
}

TEST( CategoriesChunk, MayHoldNoCategories )
{
	const CCategoriesView view( CountAnd( 0, 0 ) );
	EXPECT_EQ( view.Problem(), CountProblem::None );
	EXPECT_EQ( view.Count(), 0u );
}

TEST( CategoriesChunk, BytesBehindTheLastRecordAreIgnored )
{
	const Bytes payload = CountAnd( 2, 2 * 68 + 67 );
	EXPECT_EQ( CCategoriesView( payload ).Problem(), CountProblem::None );
	EXPECT_EQ( CCategoriesView( payload ).Count(), 2u );
}

TEST( CategoriesChunk, WithoutItsCountIsRefused )
{
	for ( size_t nBytes = 0; nBytes < 4; nBytes++ )
	{
		const CCategoriesView view( Bytes( nBytes, 0 ) );
		EXPECT_EQ( view.Problem(), CountProblem::NoCount ) << nBytes;
		EXPECT_EQ( view.Count(), 0u );
	}
}

TEST( CategoriesChunk, IsRefusedWhenItsRecordsReachPastIt )
{
	EXPECT_EQ( CCategoriesView( CountAnd( 1, 68 ) ).Problem(), CountProblem::None );
	EXPECT_EQ( CCategoriesView( CountAnd( 1, 67 ) ).Problem(), CountProblem::DoesNotFit );
	EXPECT_EQ( CCategoriesView( CountAnd( 3, 3 * 68 - 1 ) ).Problem(), CountProblem::DoesNotFit );
	EXPECT_EQ( CCategoriesView( CountAnd( 3, 3 * 68 - 1 ) ).Count(), 3u ) << "as declared, for the message";
}

TEST( CategoriesChunk, IsRefusedForACountWhoseSizeWrapsAroundIn32Bits )
{
	// 63161284 * 68 = 2^32 + 16: in 32 bits that would look like 16 bytes.
	ASSERT_EQ( static_cast<uint32_t>( uint64_t{ 63161284 } * 68 ), 16u );
	for ( const uint32_t nCount : { 63161284u, 0x40000000u, 0xFFFFFFFFu } )
	{
		const CCategoriesView view( CountAnd( nCount, 16 ) );
		EXPECT_EQ( view.Problem(), CountProblem::DoesNotFit );
		EXPECT_EQ( view.Count(), nCount );
	}
}

TEST( CategoriesChunk, HoldsAtMost4096Categories )
{
	EXPECT_EQ( CCategoriesView( CountAnd( 4096, 4096 * 68 ) ).Problem(), CountProblem::None );
	const CCategoriesView view( CountAnd( 4097, 4097 * 68 ) );
	EXPECT_EQ( view.Problem(), CountProblem::TooMany );
	EXPECT_EQ( view.Count(), 4097u );
	EXPECT_EQ( CCategoriesView( CountAnd( 4097, 4097 * 68 - 1 ) ).Problem(), CountProblem::DoesNotFit );
}

TEST( CategoriesChunk, IsWrittenAsTheLayoutSays )
{
	const std::vector<Category> categories{ { "Physics", 1, 2, 3 }, { "", 4, 5, 6 } };
	Bytes expected;
	AppendBigEndian( expected, 2 );
	AppendRecord( expected, "Physics", 1, 2, 3, 0 );
	AppendRecord( expected, "", 4, 5, 6, 0 );
	ASSERT_EQ( wire::CategoriesSize( 2 ), expected.size() );
	Bytes out( expected.size() + 1, 0xEE ); // old bytes must not show through
	EXPECT_EQ( wire::WriteCategories( out, categories ), expected.size() );
	EXPECT_EQ( out.back(), 0xEE );
	out.pop_back();
	EXPECT_EQ( out, expected );
	out.pop_back();
	EXPECT_EQ( wire::WriteCategories( out, categories ), 0u ) << "one byte is missing";
}

TEST( CategoriesChunk, LongNamesAreCutBetweenCharacters )
{
	struct Cut
	{
		std::string m_Name;
		size_t m_nKept;
	};
	const std::string e = "\xC3\xA9";            // two bytes
	const std::string euro = "\xE2\x82\xAC";     // three
	const std::string clef = "\xF0\x9D\x84\x9E"; // four
	const Cut cuts[] = {
		{ std::string( 63, 'x' ), 63 },
		{ std::string( 64, 'x' ), 63 },
		{ std::string( 500, 'x' ), 63 },
		{ std::string( 61, 'x' ) + e, 63 },
		{ std::string( 62, 'x' ) + e, 62 },
		{ std::string( 60, 'x' ) + euro + "x", 63 },
		{ std::string( 61, 'x' ) + euro, 61 },
		{ std::string( 62, 'x' ) + euro, 62 },
		{ std::string( 59, 'x' ) + clef + "x", 63 },
		{ std::string( 60, 'x' ) + clef, 60 },
		{ std::string( 61, 'x' ) + clef, 61 },
		{ std::string( 62, 'x' ) + clef, 62 },
		{ std::string( 80, '\x80' ), 63 }, // no UTF-8: cut at the limit
		{ std::string( "ab\0cd", 5 ), 2 },
	};
	for ( const Cut &cut : cuts )
	{
		const Category category{ cut.m_Name, 0, 0, 0 };
		Bytes out( wire::CategoriesSize( 1 ) );
		ASSERT_EQ( wire::WriteCategories( out, { &category, 1 } ), out.size() );
		EXPECT_EQ( CCategoriesView( out )[0].m_Name, cut.m_Name.substr( 0, cut.m_nKept ) );
	}
}

// A sample's payload, byte by byte.
Bytes Sample( uint32_t nCount, uint32_t nMark, uint32_t nFrameRateBits, const std::vector<uint32_t> &values )
{
	Bytes bytes;
	for ( const uint32_t nValue : { nCount, nMark, nFrameRateBits } )
		AppendBigEndian( bytes, nValue );
	for ( const uint32_t nValue : values )
		AppendBigEndian( bytes, nValue );
	return bytes;
}

TEST( SampleChunk, IsReadFieldByField )
{
	const Bytes payload = Sample( 3, 1, 0x42720000, { 0, 0x01020304, 0xFFFFFFFF } );
	const CSampleView view( payload );
	ASSERT_EQ( view.Problem(), CountProblem::None );
	ASSERT_EQ( view.Count(), 3u );
	EXPECT_FALSE( view.IsContinuation() );
	EXPECT_EQ( view.FrameRate(), 60.5f );
	EXPECT_EQ( view.Value( 0 ), 0u );
	EXPECT_EQ( view.Value( 1 ), 0x01020304u );
	EXPECT_EQ( view.Value( 2 ), 0xFFFFFFFFu );
	std::vector<uint32_t> copied( 2 );
	view.CopyValues( copied );
	EXPECT_THAT( copied, ElementsAre( 0, 0x01020304 ) );
	copied.resize( 3 );
	view.CopyValues( copied );
	EXPECT_THAT( copied, ElementsAre( 0, 0x01020304, 0xFFFFFFFF ) );
	view.CopyValues( {} );
}

TEST( SampleChunk, ContinuesATickWhenItsMarkIsZeroInAnyByteOrder )
{
	EXPECT_TRUE( CSampleView( Sample( 0, 0, 0, {} ) ).IsContinuation() );
	for ( const uint32_t nMark : { 1u, 0x01000000u, 0x00010000u, 0xFFFFFFFFu } )
		EXPECT_FALSE( CSampleView( Sample( 0, nMark, 0, {} ) ).IsContinuation() );
}

TEST( SampleChunk, AnyFrameRateIsHandedOnAsItIs )
{
	EXPECT_EQ( CSampleView( Sample( 0, 1, 0x7F800000, {} ) ).FrameRate(), INFINITY );
	EXPECT_TRUE( std::isnan( CSampleView( Sample( 0, 1, 0x7FC00000, {} ) ).FrameRate() ) );
	EXPECT_EQ( CSampleView( Sample( 0, 1, 0xBF800000, {} ) ).FrameRate(), -1.0f );
}

TEST( SampleChunk, WithoutItsFixedFieldsIsRefused )
{
	const Bytes payload = Sample( 0, 1, 0, {} );
	for ( size_t nBytes = 0; nBytes < 12; nBytes++ )
	{
		const CSampleView view( std::span<const uint8_t>( payload ).first( nBytes ) );
		EXPECT_EQ( view.Problem(), CountProblem::NoCount ) << nBytes;
		EXPECT_EQ( view.Count(), 0u );
	}
	EXPECT_EQ( CSampleView( payload ).Problem(), CountProblem::None );
}

TEST( SampleChunk, IsRefusedWhenItsValuesReachPastIt )
{
	Bytes payload = Sample( 2, 1, 0, { 1, 2 } );
	payload.pop_back();
	EXPECT_EQ( CSampleView( payload ).Problem(), CountProblem::DoesNotFit );
	EXPECT_EQ( CSampleView( payload ).Count(), 2u );
	// 0x40000000 * 4 is 0 in 32 bits.
	for ( const uint32_t nCount : { 0x40000000u, 0x40000001u, 0xFFFFFFFFu, 0x3FFFFFFDu } )
		EXPECT_EQ( CSampleView( Sample( nCount, 1, 0, { 1, 2 } ) ).Problem(), CountProblem::DoesNotFit );
}

TEST( SampleChunk, MayHoldMoreValuesThanThereCanBeCategoriesAndBytesBehindThem )
{
	Bytes payload = Sample( 5000, 1, 0, std::vector<uint32_t>( 5000, 9 ) );
	payload.push_back( 1 );
	const CSampleView view( payload );
	EXPECT_EQ( view.Problem(), CountProblem::None );
	EXPECT_EQ( view.Value( 4999 ), 9u );
}

TEST( SampleChunk, IsWrittenAsTheLayoutSays )
{
	const std::vector<uint32_t> values{ 1, 0x80000000, 77 };
	for ( const bool bContinuation : { false, true } )
	{
		const Bytes expected = Sample( 3, bContinuation ? 0 : 1, std::bit_cast<uint32_t>( 59.94f ), values );
		ASSERT_EQ( wire::SampleSize( 3 ), expected.size() );
		Bytes out( expected.size() );
		EXPECT_EQ( wire::WriteSample( out, bContinuation, 59.94f, values ), expected.size() );
		EXPECT_EQ( out, expected );
		out.pop_back();
		EXPECT_EQ( wire::WriteSample( out, bContinuation, 59.94f, values ), 0u );
	}
}

TEST( SampleChunk, WhatIsWrittenIsReadBack )
{
	std::vector<uint32_t> values( 64 );
	std::iota( values.begin(), values.end(), 0xFFFFFFE0 );
	Bytes out( wire::SampleSize( 64 ) );
	ASSERT_EQ( wire::WriteSample( out, true, -0.0f, values ), out.size() );
	const CSampleView view( out );
	EXPECT_TRUE( view.IsContinuation() );
	EXPECT_TRUE( std::signbit( view.FrameRate() ) );
	std::vector<uint32_t> copied( view.Count() );
	view.CopyValues( copied );
	EXPECT_THAT( copied, ElementsAreArray( values ) );
}
} // namespace
