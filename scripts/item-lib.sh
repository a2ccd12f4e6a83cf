# Functions for scripts that watch Tidemark's items in a panel and lead the sandbox, whose address is in
# $sandbox. Source it from bash, inside of a desktop session.

say() { printf '%s\n' "$*"; }

# Sends JSON $2 to the sandbox's control $1.
control() {
    curl --silent --show-error --fail --noproxy '*' -o /dev/null -H 'Content-Type: application/json' -d "$2" "$sandbox/sandbox/$1"
}

# What jq's filter $1 makes of the sandbox's world, as text.
world() {
    curl --silent --noproxy '*' "$sandbox/sandbox/world" | jq -r "$1"
}

property() {
    gdbus call --session --dest "$1" --object-path "$2" --method org.freedesktop.DBus.Properties.Get "$3" "$4"
}

# Bus name and path of the item with the id $1, as the panel knows it. The ids of pinned projects end in the
# project's id.
find_item() {
    local items watcher=org.kde.StatusNotifierWatcher
    items=$(property $watcher /StatusNotifierWatcher $watcher RegisteredStatusNotifierItems) || return
    while [[ $items =~ \'([^\'/]+)(/[^\']+)\'(.*) ]]; do
        local name=${BASH_REMATCH[1]} path=${BASH_REMATCH[2]}
        items=${BASH_REMATCH[3]}
        [[ $(property "$name" "$path" org.kde.StatusNotifierItem Id) == *"'$1'"* ]] || continue
        echo "$name $path"
        return
    done
    return 1
}

# The title of the item with the id $1, as the panel reads it.
item_title() {
    local name path
    read -r name path < <(find_item "$1") || return
    property "$name" "$path" org.kde.StatusNotifierItem Title | sed "s/^(<\\(.*\\)>,)$/\\1/"
}

# Until the title of the item $1 contains $2; for $3 seconds, 300 unless told.
wait_for_title() {
    local title= deadline=$((SECONDS + ${3:-300}))
    while ((SECONDS < deadline)); do
        title=$(item_title "$1" 2>/dev/null) && [[ $title == *"$2"* ]] && return
        sleep 0.2
    done
    say "The item $1 never read “$2” but ${title:-nothing}." >&2
    return 1
}
