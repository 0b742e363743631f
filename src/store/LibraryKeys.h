#pragma once

// The keys of the library file that hold records rather than single preferences.
namespace LibraryKeys {
// The snippet list and the category list, as JSON arrays; the names are those of the first
// version's file and never change.
inline constexpr char snippets[] = "Shortcuts";
inline constexpr char categories[] = "Categories";
// The ids of the snippets that wait for a word to end, beside the snippet list so that its JSON
// stays as it is; part of the snippets' records whenever they are compared.
inline constexpr char afterWordEnd[] = "snippetsAfterWordEnd";
} // namespace LibraryKeys
