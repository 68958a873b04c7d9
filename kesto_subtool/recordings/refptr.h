// A pointer that holds a reference to an object which counts its references.
#pragma once

#include <utility>

// T has AddRef() and Release(). An object is made with one reference; Adopt takes that one over.
template <typename T>
class CRefPtr
{
public:
	CRefPtr() = default;
	explicit CRefPtr( T *pObject )
		: m_pObject( pObject )
	{
		if ( m_pObject )
			m_pObject->AddRef();
	}
	CRefPtr( const CRefPtr &other )
		: CRefPtr( other.m_pObject )
	{
	}
	CRefPtr( CRefPtr &&other ) noexcept
		: m_pObject( std::exchange( other.m_pObject, nullptr ) )
	{
	}
	~CRefPtr()
	{
		if ( m_pObject )
			m_pObject->Release();
	}
	CRefPtr &operator=( CRefPtr other ) noexcept
	{
		std::swap( m_pObject, other.m_pObject );
		return *this;
	}

	static CRefPtr Adopt( T *pObject )
	{
		CRefPtr result;
		result.m_pObject = pObject;
		return result;
	}

	T *Get() const { return m_pObject; }
	T *operator->() const { return m_pObject; }
	T &operator*() const { return *m_pObject; }
	explicit operator bool() const { return m_pObject != nullptr; }
	friend bool operator==( const CRefPtr &, const CRefPtr & ) = default;

private:
	T *m_pObject = nullptr;
};
