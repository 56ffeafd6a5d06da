# For scripts that show windows: a display in memory with nobody at it, a home of its own for settings, mouse and keys.
# Sourced, after `scale` is set (1 or 2); positions and sizes are in the window's own units.
tools/install-packages xvfb xdotool imagemagick x11-utils openbox

home=$(mktemp -d)
export HOME=$home XDG_STATE_HOME=$home/state XDG_RUNTIME_DIR=$home/run XDG_CONFIG_HOME=$home/.config
mkdir -p "$home/.config/photrak"
mkdir -m 700 "$home/run"
printf '[PHOTRAK]\nFrameXPos=0\nFrameYPos=0\nFrameXSize=1100\nFrameYSize=760\n' > "$home/.config/photrak/PHOTRAK.INI"
unset QT_QPA_PLATFORM WAYLAND_DISPLAY
exec 9>"$home/display"
Xvfb -displayfd 9 -screen 0 2300x1700x24 -nolisten tcp >/dev/null 2>&1 &
server=$!
trap 'kill $server 2>/dev/null; rm -rf "$home"' EXIT
for _ in $(seq 50); do [ -s "$home/display" ] && break; sleep 0.1; done
DISPLAY=:$(cat "$home/display")
export DISPLAY

# A window manager gives dialogs their frames and the keyboard; the main windows stay bare at the left top corner.
mkdir -p "$home/.config/openbox"
cat > "$home/.config/openbox/rc.xml" <<'XML'
<openbox_config xmlns="http://openbox.org/3.4/rc"><focus><focusNew>yes</focusNew></focus>
<applications><application type="normal"><decor>no</decor><position force="yes"><x>0</x><y>0</y></position></application>
</applications></openbox_config>
XML
openbox >/dev/null 2>&1 &
manager=$!
trap 'kill $manager $server 2>/dev/null; rm -rf "$home"' EXIT
for _ in $(seq 50); do xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q '#' && break; sleep 0.1; done

at() { xdotool mousemove $(($1 * scale)) $(($2 * scale)); }
click() { at "$1" "$2"; sleep 0.1; xdotool click "${3:-1}"; sleep 0.3; }
double() { at "$1" "$2"; sleep 0.1; xdotool click --repeat 2 --delay 60 1; sleep 0.5; }
drag() {
    at "$1" "$2"
    xdotool mousedown 1
    at $((($1 + $3) / 2)) $((($2 + $4) / 2))
    at "$3" "$4"
    sleep 0.2
    xdotool mouseup 1
    sleep 0.3
}
key() { xdotool key "$@"; sleep 0.3; }
write() { xdotool type --delay 20 "$1"; sleep 0.2; }
# A click in the window of a title, so far from its right and lower edges.
click_in() {
    local WIDTH=0 HEIGHT=0 window
    await xdotool search --onlyvisible --name "$1"
    sleep 0.5
    window=$(xdotool search --onlyvisible --name "$1" | tail -1)
    eval "$(xdotool getwindowgeometry --shell "$window" | grep -E '^(WIDTH|HEIGHT)=')"
    xdotool mousemove --window "$window" $((WIDTH - $2 * scale)) $((HEIGHT - $3 * scale))
    sleep 0.1
    xdotool click 1
    sleep 0.3
}
# Waits up to 20 s for a command to succeed.
await() {
    for _ in $(seq 100); do "$@" >/dev/null 2>&1 && return; sleep 0.2; done
    return 1
}
