#pragma once

#include <webkit/webkit.h>

#include <string>

// The functions of WebKit that this program calls. None is linked: WebKit and the 150 libraries that it needs are
// loaded for the first page, and a program without a page never loads them. Within this namespace, each name below
// hides WebKit's own declaration; it is called in the same way, and can release an Owned.

namespace qoro
{

/// Loads WebKit, once. Any thread; takes tens of milliseconds the first time.
/// @return what is wrong; empty once WebKit is loaded
const std::string& load_webkit();

/// Loads WebKit on a thread, once. Any thread.
/// @return whether load_webkit() does not block: WebKit is loaded, or what is wrong is known
bool loads_webkit_beside();

/// The address of a function of WebKit's. Loads WebKit if necessary. Any thread.
/// @throws std::runtime_error if WebKit is not installed or lacks the function
void* webkit_function(const char* name);

#define QORO_WEBKIT_FUNCTION(name)                                                                                     \
    struct name##_function {                                                                                           \
        operator decltype (&::name)() const                                                                            \
        {                                                                                                              \
            static const auto address = reinterpret_cast<decltype(&::name)>(webkit_function(#name));                   \
            return address;                                                                                            \
        }                                                                                                              \
    };                                                                                                                 \
    inline constexpr name##_function name{};

// clang-format off
QORO_WEBKIT_FUNCTION(jsc_value_is_boolean)
QORO_WEBKIT_FUNCTION(jsc_value_is_string)
QORO_WEBKIT_FUNCTION(jsc_value_to_boolean)
QORO_WEBKIT_FUNCTION(jsc_value_to_double)
QORO_WEBKIT_FUNCTION(jsc_value_to_string)
QORO_WEBKIT_FUNCTION(webkit_authentication_request_cancel)
QORO_WEBKIT_FUNCTION(webkit_authentication_request_get_host)
QORO_WEBKIT_FUNCTION(webkit_download_cancel)
QORO_WEBKIT_FUNCTION(webkit_download_get_request)
QORO_WEBKIT_FUNCTION(webkit_download_get_web_view)
QORO_WEBKIT_FUNCTION(webkit_feature_get_identifier)
QORO_WEBKIT_FUNCTION(webkit_feature_list_get)
QORO_WEBKIT_FUNCTION(webkit_feature_list_get_length)
QORO_WEBKIT_FUNCTION(webkit_feature_list_unref)
QORO_WEBKIT_FUNCTION(webkit_file_chooser_request_cancel)
QORO_WEBKIT_FUNCTION(webkit_get_minor_version)
QORO_WEBKIT_FUNCTION(webkit_memory_pressure_settings_free)
QORO_WEBKIT_FUNCTION(webkit_memory_pressure_settings_new)
QORO_WEBKIT_FUNCTION(webkit_memory_pressure_settings_set_memory_limit)
QORO_WEBKIT_FUNCTION(webkit_memory_pressure_settings_set_poll_interval)
QORO_WEBKIT_FUNCTION(webkit_navigation_action_get_navigation_type)
QORO_WEBKIT_FUNCTION(webkit_navigation_action_get_request)
QORO_WEBKIT_FUNCTION(webkit_navigation_action_is_redirect)
QORO_WEBKIT_FUNCTION(webkit_navigation_action_is_user_gesture)
QORO_WEBKIT_FUNCTION(webkit_navigation_policy_decision_get_navigation_action)
QORO_WEBKIT_FUNCTION(webkit_navigation_policy_decision_get_type)
QORO_WEBKIT_FUNCTION(webkit_network_error_quark)
QORO_WEBKIT_FUNCTION(webkit_network_proxy_settings_free)
QORO_WEBKIT_FUNCTION(webkit_network_proxy_settings_new)
QORO_WEBKIT_FUNCTION(webkit_network_session_new_ephemeral)
QORO_WEBKIT_FUNCTION(webkit_network_session_set_persistent_credential_storage_enabled)
QORO_WEBKIT_FUNCTION(webkit_network_session_set_proxy_settings)
QORO_WEBKIT_FUNCTION(webkit_notification_get_title)
QORO_WEBKIT_FUNCTION(webkit_permission_request_deny)
QORO_WEBKIT_FUNCTION(webkit_policy_decision_ignore)
QORO_WEBKIT_FUNCTION(webkit_policy_decision_use)
QORO_WEBKIT_FUNCTION(webkit_response_policy_decision_get_request)
QORO_WEBKIT_FUNCTION(webkit_response_policy_decision_get_type)
QORO_WEBKIT_FUNCTION(webkit_response_policy_decision_is_main_frame_main_resource)
QORO_WEBKIT_FUNCTION(webkit_response_policy_decision_is_mime_type_supported)
QORO_WEBKIT_FUNCTION(webkit_script_dialog_get_message)
QORO_WEBKIT_FUNCTION(webkit_security_manager_register_uri_scheme_as_cors_enabled)
QORO_WEBKIT_FUNCTION(webkit_security_manager_register_uri_scheme_as_secure)
QORO_WEBKIT_FUNCTION(webkit_settings_get_all_features)
QORO_WEBKIT_FUNCTION(webkit_settings_new_with_settings)
QORO_WEBKIT_FUNCTION(webkit_settings_set_enable_developer_extras)
QORO_WEBKIT_FUNCTION(webkit_settings_set_feature_enabled)
QORO_WEBKIT_FUNCTION(webkit_uri_request_get_http_method)
QORO_WEBKIT_FUNCTION(webkit_uri_request_get_uri)
QORO_WEBKIT_FUNCTION(webkit_uri_request_new)
QORO_WEBKIT_FUNCTION(webkit_uri_response_get_status_code)
QORO_WEBKIT_FUNCTION(webkit_uri_scheme_request_finish_error)
QORO_WEBKIT_FUNCTION(webkit_uri_scheme_request_finish_with_response)
QORO_WEBKIT_FUNCTION(webkit_uri_scheme_request_get_uri)
QORO_WEBKIT_FUNCTION(webkit_uri_scheme_response_new)
QORO_WEBKIT_FUNCTION(webkit_uri_scheme_response_set_content_type)
QORO_WEBKIT_FUNCTION(webkit_uri_scheme_response_set_http_headers)
QORO_WEBKIT_FUNCTION(webkit_user_content_filter_store_new)
QORO_WEBKIT_FUNCTION(webkit_user_content_filter_store_save)
QORO_WEBKIT_FUNCTION(webkit_user_content_filter_store_save_finish)
QORO_WEBKIT_FUNCTION(webkit_user_content_filter_unref)
QORO_WEBKIT_FUNCTION(webkit_user_content_manager_add_filter)
QORO_WEBKIT_FUNCTION(webkit_user_content_manager_add_script)
QORO_WEBKIT_FUNCTION(webkit_user_content_manager_new)
QORO_WEBKIT_FUNCTION(webkit_user_content_manager_register_script_message_handler)
QORO_WEBKIT_FUNCTION(webkit_user_content_manager_remove_filter)
QORO_WEBKIT_FUNCTION(webkit_user_message_get_name)
QORO_WEBKIT_FUNCTION(webkit_user_message_get_parameters)
QORO_WEBKIT_FUNCTION(webkit_user_message_new)
QORO_WEBKIT_FUNCTION(webkit_user_message_send_reply)
QORO_WEBKIT_FUNCTION(webkit_user_script_new_for_world)
QORO_WEBKIT_FUNCTION(webkit_user_script_unref)
QORO_WEBKIT_FUNCTION(webkit_web_context_get_security_manager)
QORO_WEBKIT_FUNCTION(webkit_web_context_get_type)
QORO_WEBKIT_FUNCTION(webkit_web_context_register_uri_scheme)
QORO_WEBKIT_FUNCTION(webkit_web_context_set_web_process_extensions_directory)
QORO_WEBKIT_FUNCTION(webkit_web_context_set_web_process_extensions_initialization_user_data)
QORO_WEBKIT_FUNCTION(webkit_web_inspector_show)
QORO_WEBKIT_FUNCTION(webkit_web_resource_get_response)
QORO_WEBKIT_FUNCTION(webkit_web_resource_get_uri)
QORO_WEBKIT_FUNCTION(webkit_web_view_call_async_javascript_function)
QORO_WEBKIT_FUNCTION(webkit_web_view_call_async_javascript_function_finish)
QORO_WEBKIT_FUNCTION(webkit_web_view_can_go_back)
QORO_WEBKIT_FUNCTION(webkit_web_view_can_go_forward)
QORO_WEBKIT_FUNCTION(webkit_web_view_evaluate_javascript)
QORO_WEBKIT_FUNCTION(webkit_web_view_evaluate_javascript_finish)
QORO_WEBKIT_FUNCTION(webkit_web_view_get_estimated_load_progress)
QORO_WEBKIT_FUNCTION(webkit_web_view_get_inspector)
QORO_WEBKIT_FUNCTION(webkit_web_view_get_settings)
QORO_WEBKIT_FUNCTION(webkit_web_view_get_title)
QORO_WEBKIT_FUNCTION(webkit_web_view_get_tls_info)
QORO_WEBKIT_FUNCTION(webkit_web_view_get_type)
QORO_WEBKIT_FUNCTION(webkit_web_view_get_uri)
QORO_WEBKIT_FUNCTION(webkit_web_view_get_zoom_level)
QORO_WEBKIT_FUNCTION(webkit_web_view_go_back)
QORO_WEBKIT_FUNCTION(webkit_web_view_go_forward)
QORO_WEBKIT_FUNCTION(webkit_web_view_is_loading)
QORO_WEBKIT_FUNCTION(webkit_web_view_load_bytes)
QORO_WEBKIT_FUNCTION(webkit_web_view_load_uri)
QORO_WEBKIT_FUNCTION(webkit_web_view_reload)
QORO_WEBKIT_FUNCTION(webkit_web_view_send_message_to_page)
QORO_WEBKIT_FUNCTION(webkit_web_view_send_message_to_page_finish)
QORO_WEBKIT_FUNCTION(webkit_web_view_set_background_color)
QORO_WEBKIT_FUNCTION(webkit_web_view_set_zoom_level)
QORO_WEBKIT_FUNCTION(webkit_web_view_stop_loading)
QORO_WEBKIT_FUNCTION(webkit_web_view_terminate_web_process)
// clang-format on

#undef QORO_WEBKIT_FUNCTION

} // namespace qoro
