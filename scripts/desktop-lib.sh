# Functions that bring up a private desktop without a screen: folders, X server, session bus, window
# manager, panel. Tests and the demo source this file from bash (4.4 or newer). In order:
#
#   desktop_open_session          private folders, environment, and somebody who cleans up in any case
#   desktop_start_x [WxHxDEPTH]   an X server on a free display
#   desktop_run COMMAND…          COMMAND under a session bus of its own; gives its exit code
#   desktop_close_session         ends everything that was started since and removes the folders
#
# and inside of what desktop_run started:
#
#   desktop_write_panel_config [SIZE] [dark|light] [top|bottom]   before the first panel of the session
#   desktop_exec_panel            becomes the panel
#   desktop_wait_for_name NAME [SECONDS]                          until NAME is on the session bus
#
# Whatever runs in the session is known by its XDG_RUNTIME_DIR, which every child inherits, so that
# services that detach themselves are found as well.

# Leaves the process ids of everything in the session of folder $1 in $desktop_processes. Nothing that looks for them
# may have the session's folder in its own environment, or it finds itself.
desktop_find_processes() {
    mapfile -t desktop_processes < <(env -u XDG_RUNTIME_DIR grep -lzsxF "XDG_RUNTIME_DIR=$1/run" /proc/[0-9]*/environ)
    desktop_processes=("${desktop_processes[@]#/proc/}")
    desktop_processes=("${desktop_processes[@]%/environ}")
}

# Ends everything in the session of folder $1: asks, and after two seconds insists.
desktop_kill_processes() {
    local signal=TERM tries desktop_processes
    for tries in {1..150}; do
        desktop_find_processes "$1"
        ((${#desktop_processes[@]})) || return 0
        ((tries <= 100)) || signal=KILL
        # A process may have ended since.
        ((tries != 1 && tries <= 100)) || kill -s "$signal" "${desktop_processes[@]}" 2>/dev/null || true
        env -u XDG_RUNTIME_DIR sleep 0.02
    done
    echo "Processes of a desktop session did not end: ${desktop_processes[*]}" >&2
}

desktop_remove_session() {
    desktop_kill_processes "$1"
    rm -rf "$1"
}

# A caller that is killed outright cannot clean up. A process apart from its tree holds the other end of a
# pipe and does it then. Descriptor $DESKTOP_LIFELINE is the caller's end; no child may inherit it.
desktop_start_reaper() {
    local folder=$1
    mkfifo "$folder/lifeline"
    (
        setsid bash -c 'source "$1"; read -r _ <"$2/lifeline"; desktop_remove_session "$2"' \
            desktop-reaper "${BASH_SOURCE[0]}" "$folder" </dev/null >/dev/null 2>&1 &
    )
    exec {DESKTOP_LIFELINE}>"$folder/lifeline"
}

desktop_open_session() {
    DESKTOP_FOLDER=$(mktemp -d "${TMPDIR:-/tmp}/tidemark-desktop.XXXXXX") || return
    desktop_start_reaper "$DESKTOP_FOLDER"
    mkdir -m 700 "$DESKTOP_FOLDER"/{home,config,cache,data,state,run,log}
    export HOME=$DESKTOP_FOLDER/home XDG_CONFIG_HOME=$DESKTOP_FOLDER/config \
        XDG_CACHE_HOME=$DESKTOP_FOLDER/cache XDG_DATA_HOME=$DESKTOP_FOLDER/data \
        XDG_STATE_HOME=$DESKTOP_FOLDER/state XDG_RUNTIME_DIR=$DESKTOP_FOLDER/run
    # No accessibility bus, no virtual file systems, no settings service: less to start and to end.
    export NO_AT_BRIDGE=1 GIO_USE_VFS=local GSETTINGS_BACKEND=memory
    # What belongs to the session that we may have been started from.
    unset DISPLAY WAYLAND_DISPLAY XAUTHORITY DBUS_SESSION_BUS_ADDRESS SESSION_MANAGER XDG_CURRENT_DESKTOP \
        XDG_SESSION_TYPE XDG_ACTIVATION_TOKEN DESKTOP_STARTUP_ID QT_QPA_PLATFORM QT_QPA_PLATFORMTHEME \
        GTK_MODULES GNOME_KEYRING_CONTROL
    # Whatever is installed, the bus shows no notifications by itself.
    mkdir -p "$XDG_DATA_HOME/dbus-1/services"
    printf '[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=/bin/false\n' \
        >"$XDG_DATA_HOME/dbus-1/services/org.freedesktop.Notifications.service"
}

desktop_close_session() {
    [[ -n ${DESKTOP_FOLDER:-} ]] || return 0
    desktop_remove_session "$DESKTOP_FOLDER"
    exec {DESKTOP_LIFELINE}>&-
    DESKTOP_FOLDER=
}

# The server takes the first free display itself and says when it accepts clients.
desktop_start_x() {
    local geometry=${1:-1280x800x24} number=
    mkfifo "$DESKTOP_FOLDER/display"
    Xvfb -displayfd 3 -screen 0 "$geometry" -nolisten tcp -noreset 3>"$DESKTOP_FOLDER/display" \
        </dev/null >"$DESKTOP_FOLDER/log/xvfb" 2>&1 {DESKTOP_LIFELINE}>&- &
    read -t 300 -r number <"$DESKTOP_FOLDER/display"
    if [[ -z $number ]]; then
        echo "The X server did not start:" >&2
        cat "$DESKTOP_FOLDER/log/xvfb" >&2
        return 1
    fi
    export DISPLAY=:$number
}

# In the background, so that a signal to us is handled at once and not after COMMAND has ended. What the bus
# and the services that it starts have to say goes into a file.
desktop_run() {
    dbus-run-session -- bash -c 'exec "$@" 2>&9 9>&-' desktop-run "$@" \
        <&0 9>&2 2>"$DESKTOP_FOLDER/log/bus" {DESKTOP_LIFELINE}>&- &
    wait $!
}

desktop_write_panel_config() {
    local size=${1:-30} theme=${2:-dark} edge=${3:-top} position='p=6;x=0;y=0' dark=true
    [[ $edge == top ]] || position='p=8;x=0;y=0'
    [[ $theme == dark ]] || dark=false
    local folder=$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml
    mkdir -p "$folder"
    cat >"$folder/xfce4-panel.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="$dark"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="$position"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="$size"/>
      <property name="icon-size" type="uint" value="0"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
      <property name="icon-size" type="int" value="0"/>
    </property>
  </property>
</channel>
XML
}

desktop_exec_panel() {
    exec xfce4-panel --disable-wm-check
}

desktop_wait_for_name() {
    gdbus wait --session --timeout "${2:-300}" "$1"
}
