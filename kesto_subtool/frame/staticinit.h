// Static objects that are constructed in the order in which they need each other.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

// The module's static-initialisation state word: one bit for each ordered static object that stands, and the touch bit.
// The only thing in the module that is atomic: a host may ask for the module's properties on any thread.
class CStaticInitState
{
public:
	static constexpr uint32_t TOUCHED = 0x40000000;
	static constexpr uint32_t ALL_BUT_TOUCHED = 0xBFFFFFFF;

	explicit constexpr CStaticInitState( uint32_t nWord = 0 )
		: m_nWord( nWord )
	{
	}

	uint32_t Word() const { return m_nWord.load(); }
	bool IsConstructed( uint32_t nBit ) const { return ( m_nWord.load() & nBit ) != 0; }
	void SetConstructed( uint32_t nBit ) { m_nWord.fetch_or( nBit ); }
	void ClearConstructed( uint32_t nBit ) { m_nWord.fetch_and( ~nBit ); }

	// Sets the touch bit. When every other bit was set and it was not, it says so through Plat_DebugPrint, with the
	// address of the data that the word guards.
	void Touch( const void *pGuardedData );

private:
	std::atomic<uint32_t> m_nWord;
};

// Room for a static object. It is constant-initialised, so that it may be used from any other static constructor, and
// holds nothing until COrderedConstructor or ORDERED_CONSTRUCT puts the object there.
template <typename T>
class COrderedStatic
{
public:
	// nBit is this object's own bit in the state word, one of the 30 below the touch bit.
	constexpr COrderedStatic( CStaticInitState &state, uint32_t nBit )
		: m_State( state )
		, m_nBit( nBit )
	{
	}
	constexpr ~COrderedStatic() {} // the object ends with its COrderedConstructor
	COrderedStatic( const COrderedStatic & ) = delete;
	COrderedStatic &operator=( const COrderedStatic & ) = delete;

	bool IsConstructed() const { return m_State.IsConstructed( m_nBit ); }

	// Does nothing when the object stands already.
	template <typename... Arguments>
	void Construct( Arguments &&...arguments )
	{
		if ( IsConstructed() )
			return;
		std::construct_at( &m_Object, std::forward<Arguments>( arguments )... );
		m_State.SetConstructed( m_nBit );
	}

	void Destroy()
	{
		if ( !IsConstructed() )
			return;
		m_State.ClearConstructed( m_nBit );
		std::destroy_at( &m_Object );
	}

	T &Get() { return m_Object; } // only while IsConstructed()
	const void *Address() const { return &m_Object; }

private:
	CStaticInitState &m_State;
	uint32_t m_nBit;
	union
	{
		char m_Nothing = 0;
		T m_Object;
	};
};

// Stops the process: an object without a default constructor was left to COrderedConstructor.
void ReportMissingOrderedConstruct();

// Constructs the object during static initialisation, unless somebody who needed it earlier has done so, and ends it
// with the module. The dependency resolution function runs first: there, ORDERED_CONSTRUCT constructs what the object
// needs, and the object itself when it has no default constructor.
template <typename T>
class COrderedConstructor
{
public:
	explicit COrderedConstructor( COrderedStatic<T> &object, void ( *pResolveDependencies )() = nullptr )
		: m_Object( object )
	{
		if ( pResolveDependencies )
			pResolveDependencies();
		if ( object.IsConstructed() )
			return;
		if constexpr ( std::is_default_constructible_v<T> )
			object.Construct();
		else
			ReportMissingOrderedConstruct();
	}
	~COrderedConstructor() { m_Object.Destroy(); }
	COrderedConstructor( const COrderedConstructor & ) = delete;
	COrderedConstructor &operator=( const COrderedConstructor & ) = delete;

private:
	COrderedStatic<T> &m_Object;
};

#define ORDERED_CONSTRUCT( object, ... ) ( object ).Construct( __VA_ARGS__ )
