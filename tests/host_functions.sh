#!/usr/bin/env bash
# host_functions.sh LIBRARY DOCUMENT: the table in the document names each function of the host
# libraries that the library uses, in a row with its class. A constructor has its parameters there.
set -euo pipefail
export LC_ALL=C

library=$1
document=$2

# Prints one function per line, such as "variant_bag_t::has(const std::wstring&) const".
used_functions() {
    nm --dynamic --demangle --undefined-only "$library" |
        grep -oE '\b(basekit2|ROVA_[0-9_]+|setbook2|velmo2)::[^ (]*(<[^()]*>)?\(.*' |
        sed -E '
            s/\[abi:[a-z0-9]+\]//
            s/std::__cxx11::basic_string<wchar_t, [^()]*<wchar_t> ?>/std::wstring/g
            s/std::__cxx11::basic_string<char, [^()]*<char> ?>/std::string/g
            s/([A-Za-z_0-9:]+) const([&*])/const \1\2/g
            s/\b(basekit2|ROVA_[0-9_]+|setbook2|velmo2):://g
            s/<.*>\(/(/' |
        sort -u
}

# WORD...: returns whether a row of the table has all of them.
is_documented() {
    local rows word
    rows=$(grep '^|' "$document")
    for word in "$@"; do
        rows=$(grep -wF -- "$word" <<<"$rows") || return 1
    done
}

# FUNCTION: prints the class or namespace, if there is one, and the name in it.
words_of() {
    local name=${1%%(*} scope
    scope=${name%::*}
    scope=${scope##*::}
    if [[ $name != *::* ]]; then
        echo "$name"
    elif [[ ${name##*::} == "$scope" ]]; then
        echo "${1##*"$scope::"}" # with parameters: a constructor
    else
        printf '%s\n' "$scope" "${name##*::}"
    fi
}

functions=$(used_functions)
missing=0
while read -r function; do
    mapfile -t words < <(words_of "$function")
    if ! is_documented "${words[@]}"; then
        echo "not in the table of $document: $function" >&2
        missing=1
    fi
done <<<"$functions"
exit "$missing"
