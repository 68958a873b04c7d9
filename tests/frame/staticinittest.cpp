#include "frame/staticinit.h"

#include <gmock/gmock.h>

#include <cinttypes>
#include <cstring>

#include "frame/binaryproperties.h"
#include "frame/fakeservices.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
std::string StderrOfTouch( CStaticInitState &state, const void *pGuarded )
{
	testing::internal::CaptureStderr();
	state.Touch( pGuarded );
	return testing::internal::GetCapturedStderr();
}
} // namespace

TEST( StaticInitState, TouchingSetsTheTouchBitAndSaysNothing )
{
	for ( const uint32_t nBefore : { 0u, 1u, 0x3FFFFFFFu, 0x80000000u, 0x40000000u, 0xFFFFFFFFu } )
	{
		CStaticInitState state( nBefore );
		EXPECT_EQ( StderrOfTouch( state, &state ), "" ) << nBefore;
		EXPECT_EQ( state.Word(), nBefore | 0x40000000u );
	}
}

TEST( StaticInitState, TouchingAWordWithEveryOtherBitSaysSoOnceWithTheGuardedAddress )
{
	CStaticInitState state( 0xBFFFFFFF );
	int nGuarded = 0;
	char expected[100];
	std::snprintf(
		expected, sizeof( expected ), "Intentionally vague touch behavior for %p\n", static_cast<void *>( &nGuarded ) );
	EXPECT_EQ( StderrOfTouch( state, &nGuarded ), expected );
	EXPECT_EQ( state.Word(), 0xFFFFFFFFu );
	EXPECT_EQ( StderrOfTouch( state, &nGuarded ), "" );
}

TEST( BinaryProperties, AnswerEveryKey )
{
	const struct
	{
		int m_nKey;
		const char *m_pString; // null: an integer
		intptr_t m_nInteger;
	} rows[] = {
		{ 0, "Release", 0 },
		{ 1, nullptr, 0 },
		{ 2, nullptr, 1 },
		{ 3, "kesto_subtool", 0 },
		{ 4, "kesto_subtool", 0 },
		{ 5, nullptr, 0 },
		{ 6, nullptr, 1 },
		{ 7, nullptr, 2 },
	};
	CStaticInitState state;
	for ( const auto &row : rows )
	{
		BinaryProperty property;
		std::memset( &property, 0xEE, sizeof( property ) );
		EXPECT_EQ( GetBinaryProperty( state, nullptr, row.m_nKey, &property ), 1 ) << row.m_nKey;
		if ( row.m_pString )
		{
			EXPECT_EQ( property.m_Kind, BinaryPropertyKind::String ) << row.m_nKey;
			EXPECT_STREQ( property.m_pString, row.m_pString ) << row.m_nKey;
		}
		else
		{
			EXPECT_EQ( property.m_Kind, BinaryPropertyKind::Integer ) << row.m_nKey;
			EXPECT_EQ( property.m_nInteger, row.m_nInteger ) << row.m_nKey;
		}
	}
}

TEST( BinaryProperties, LeaveTheRecordAloneForAnyOtherKey )
{
	CStaticInitState state;
	for ( const int nKey : { 8, -1, 1000000, INT32_MIN, INT32_MAX } )
	{
		unsigned char before[sizeof( BinaryProperty )];
		std::memset( before, 0xEE, sizeof( before ) );
		BinaryProperty property;
		std::memcpy( &property, before, sizeof( property ) );
		EXPECT_EQ( GetBinaryProperty( state, nullptr, nKey, &property ), 0 ) << nKey;
		EXPECT_EQ( std::memcmp( &property, before, sizeof( property ) ), 0 ) << nKey;
	}
}

TEST( BinaryProperties, TouchTheStateWordWhateverTheKey )
{
	for ( const int nKey : { 0, 7, 8, -1 } )
	{
		CStaticInitState state;
		BinaryProperty property;
		GetBinaryProperty( state, nullptr, nKey, &property );
		EXPECT_EQ( state.Word(), 0x40000000u ) << nKey;
	}
}

namespace
{
std::vector<std::string> g_Events;

class CTracked
{
public:
	CTracked()
		: CTracked( "default" )
	{
	}
	explicit CTracked( std::string name )
		: m_Name( std::move( name ) )
	{
		g_Events.push_back( "+" + m_Name );
	}
	~CTracked() { g_Events.push_back( "-" + m_Name ); }

	std::string m_Name;
};

struct CNeedsName
{
	explicit CNeedsName( int nValue )
		: m_nValue( nValue )
	{
	}
	int m_nValue;
};

CStaticInitState g_State;
COrderedStatic<CTracked> g_Needed( g_State, 1 );
COrderedStatic<CTracked> g_Needing( g_State, 2 );
COrderedStatic<CNeedsName> g_WithArgument( g_State, 4 );

class OrderedStatic : public testing::Test
{
protected:
	OrderedStatic() { g_Events.clear(); }
};
} // namespace

TEST_F( OrderedStatic, ADefaultConstructibleObjectIsMadeAndEndedByItsConstructor )
{
	{
		const COrderedConstructor constructor( g_Needed );
		EXPECT_TRUE( g_Needed.IsConstructed() );
		EXPECT_EQ( g_State.Word(), 1u );
		EXPECT_EQ( g_Needed.Get().m_Name, "default" );
	}
	EXPECT_FALSE( g_Needed.IsConstructed() );
	EXPECT_EQ( g_State.Word(), 0u );
	EXPECT_THAT( g_Events, ElementsAre( "+default", "-default" ) );
}

TEST_F( OrderedStatic, WhatAnObjectNeedsIsMadeFirstEvenWhenItsOwnConstructorRunsLater )
{
	{
		const COrderedConstructor needing(
			g_Needing, +[] { ORDERED_CONSTRUCT( g_Needed, "needed" ); } );
		const COrderedConstructor needed( g_Needed );
		EXPECT_EQ( g_Needed.Get().m_Name, "needed" ) << "it was not made twice";
		EXPECT_THAT( g_Events, ElementsAre( "+needed", "+default" ) );
	}
	EXPECT_EQ( g_State.Word(), 0u );
}

TEST_F( OrderedStatic, AnObjectWithoutADefaultConstructorIsMadeByItsResolutionFunction )
{
	CExpectFatalErrors errors;
	const COrderedConstructor constructor(
		g_WithArgument, +[] { ORDERED_CONSTRUCT( g_WithArgument, 42 ); } );
	EXPECT_EQ( g_WithArgument.Get().m_nValue, 42 );
	EXPECT_THAT( errors.Texts(), IsEmpty() );
}

TEST_F( OrderedStatic, AnObjectWithoutADefaultConstructorThatNobodyMadeIsReported )
{
	CExpectFatalErrors errors;
	const COrderedConstructor constructor( g_WithArgument );
	EXPECT_FALSE( g_WithArgument.IsConstructed() );
	EXPECT_THAT( errors.Texts(),
		ElementsAre( "Ordered constructor wrapped type has no default constructor.\n\tYou must construct it with "
					 "ORDERED_CONSTRUCT macro in the dependency resolution function.\n" ) );
}
