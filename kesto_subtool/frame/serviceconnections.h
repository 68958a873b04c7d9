// The services of the host that the module connects when it starts.
#pragma once

#include <span>

#include "tessel/factory.h"

struct ServiceConnection
{
	const char *m_pName;
	void *m_pService = nullptr; // null while not connected
};

// A table of rows that the owner keeps.
class CServiceConnections
{
public:
	explicit constexpr CServiceConnections( std::span<ServiceConnection> rows )
		: m_Rows( rows )
	{
	}

	// Connect every row, or the rows of one name, through the host's factory. A row that is connected keeps its
	// service; one that the factory does not know stays unconnected. A null factory connects nothing.
	void ConnectAll( CreateInterfaceFn pFactory ) const;
	void Connect( CreateInterfaceFn pFactory, const char *pName ) const;

	void *Find( const char *pName ) const; // the connected service, or null
	void Clear() const;

private:
	std::span<ServiceConnection> m_Rows;
};
