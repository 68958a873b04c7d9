#include "frame/interfaceregistry.h"

#include <cstring>

void *CInterfaceRegistry::Create( const char *pName, int *pReturnCode ) const
{
	const CInterfaceRegistration *pFound = m_pHead;
	while ( pFound && ( !pName || std::strcmp( pFound->m_pName, pName ) != 0 ) )
		pFound = pFound->m_pNext;
	if ( pReturnCode )
		*pReturnCode = pFound ? 0 : 1;
	return pFound ? pFound->m_pInstantiate() : nullptr;
}

CInterfaceRegistration::CInterfaceRegistration(
	CInterfaceRegistry &registry, InstantiateInterfaceFn pInstantiate, const char *pName )
	: m_pInstantiate( pInstantiate )
	, m_pName( pName )
	, m_pNext( registry.m_pHead )
{
	registry.m_pHead = this;
}
