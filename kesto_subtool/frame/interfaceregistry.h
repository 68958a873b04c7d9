// The interfaces that the module offers by name.
#pragma once

using InstantiateInterfaceFn = void *(*)();

class CInterfaceRegistration;

// A list of registrations that the module's static initialisation builds. Constant-initialised, so that it stands
// before any registration is made.
class CInterfaceRegistry
{
public:
	constexpr CInterfaceRegistry() = default;
	CInterfaceRegistry( const CInterfaceRegistry & ) = delete;
	CInterfaceRegistry &operator=( const CInterfaceRegistry & ) = delete;

	// What the newest registration of exactly that name (compared byte for byte) makes, or null. pReturnCode may be
	// null; otherwise it receives 0, or 1 when there is no such registration.
	void *Create( const char *pName, int *pReturnCode ) const;

private:
	friend class CInterfaceRegistration;

	const CInterfaceRegistration *m_pHead = nullptr;
};

// Puts itself at the head of the registry. Must live as long as the registry is asked.
class CInterfaceRegistration
{
public:
	CInterfaceRegistration( CInterfaceRegistry &registry, InstantiateInterfaceFn pInstantiate, const char *pName );
	CInterfaceRegistration( const CInterfaceRegistration & ) = delete;
	CInterfaceRegistration &operator=( const CInterfaceRegistration & ) = delete;

private:
	friend class CInterfaceRegistry;

	InstantiateInterfaceFn m_pInstantiate;
	const char *m_pName;
	const CInterfaceRegistration *m_pNext;
};
