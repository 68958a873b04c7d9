// HAS_SANITIZER is defined where a sanitizer has replaced the allocator; it can be asked then.
#pragma once

#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ )
#define HAS_SANITIZER 1
#elif defined( __has_feature )
#if __has_feature( address_sanitizer ) || __has_feature( thread_sanitizer )
#define HAS_SANITIZER 1
#endif
#endif
