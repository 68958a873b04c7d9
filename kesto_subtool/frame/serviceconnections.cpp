#include "frame/serviceconnections.h"

#include <cstring>

namespace
{
void ConnectRow( ServiceConnection &row, CreateInterfaceFn pFactory )
{
	if ( !row.m_pService && pFactory )
		row.m_pService = pFactory( row.m_pName, nullptr );
}

bool HasName( const ServiceConnection &row, const char *pName )
{
	return pName && std::strcmp( row.m_pName, pName ) == 0;
}
} // namespace

void CServiceConnections::ConnectAll( CreateInterfaceFn pFactory ) const
{
	for ( ServiceConnection &row : m_Rows )
		ConnectRow( row, pFactory );
}

void CServiceConnections::Connect( CreateInterfaceFn pFactory, const char *pName ) const
{
	for ( ServiceConnection &row : m_Rows )
	{
		if ( HasName( row, pName ) )
			ConnectRow( row, pFactory );
	}
}

void *CServiceConnections::Find( const char *pName ) const
{
	for ( const ServiceConnection &row : m_Rows )
	{
		if ( HasName( row, pName ) )
			return row.m_pService;
	}
	return nullptr;
}

void CServiceConnections::Clear() const
{
	for ( ServiceConnection &row : m_Rows )
		row.m_pService = nullptr;
}
