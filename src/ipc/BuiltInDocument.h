#pragma once

namespace Orlix {

// The names in the documents that a data transfer makes and knows: below the root one child with its attributes.
constexpr const wchar_t* ROOT_NAME = L"root";
constexpr const wchar_t* CHILD_TOUCH_INPUT = L"touch_input";
constexpr const wchar_t* CHILD_PAGE_CMD = L"page_cmd";
constexpr const wchar_t* CHILD_POPUP_CMD = L"popup_cmd";
constexpr const wchar_t* ATTRIBUTE_OPE_HANDLE = L"ope_handle";
constexpr const wchar_t* ATTRIBUTE_PAGE_NAME = L"page_name";
} // namespace Orlix
