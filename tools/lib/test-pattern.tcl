# SPDX-License-Identifier: GPL-3.0-or-later
# The moving test pattern of a private desktop: fills the screen below all windows.
#
# Usage: wish test-pattern.tcl WIDTH HEIGHT RATE BITS
#
# Along the top edge BITS square blocks show the frame's number in binary, white for 1, the lowest bit on the right. A
# blue bar travels across the middle; the lowest quarter is pure red, green and blue, a third of the width each. Only
# what changes is drawn: the pattern costs its viewer next to nothing.
lassign $argv width height rate bits

set block [expr {$width / $bits}]
set stripHeight $block
set laneTop [expr {$height / 4}]
set laneHeight [expr {$height / 3}]
set patchTop [expr {$height * 3 / 4}]
set barWidth [expr {$width / 16}]

wm title . "Moving test pattern"
wm attributes . -type desktop
wm geometry . ${width}x${height}+0+0
. configure -background "#28282E" -cursor left_ptr

proc part {path x y width height colour} {
    canvas $path -width $width -height $height -background $colour -highlightthickness 0 -borderwidth 0
    place $path -x $x -y $y -width $width -height $height
}

part .strip 0 0 $width $stripHeight black
for {set bit 0} {$bit < $bits} {incr bit} {
    set left [expr {($bits - 1 - $bit) * $block}]
    set blocks($bit) [.strip create rectangle $left 0 [expr {$left + $block}] $block -outline "" -fill black]
}

part .lane 0 $laneTop $width $laneHeight "#37373D"
set bar [.lane create rectangle 0 0 $barWidth $laneHeight -outline "" -fill "#007ACC"]

foreach {name index colour} {red 0 #FF0000 green 1 #00FF00 blue 2 #0000FF} {
    set left [expr {$width * $index / 3}]
    part .$name $left $patchTop [expr {$width * ($index + 1) / 3 - $left}] [expr {$height - $patchTop}] $colour
}

# Shows frame number `frame` and plans the next one by the clock: lateness does not add up.
proc show {frame} {
    global blocks bar bits rate width laneHeight barWidth start
    for {set bit 0} {$bit < $bits} {incr bit} {
        .strip itemconfigure $blocks($bit) -fill [expr {($frame >> $bit) & 1 ? "white" : "black"}]
    }
    set x [expr {$frame * 8 % ($width - $barWidth)}]
    .lane coords $bar $x 0 [expr {$x + $barWidth}] $laneHeight
    set next [expr {$start + ($frame + 1) * 1000 / $rate}]
    after [expr {max(1, $next - [clock milliseconds])}] [list show [expr {$frame + 1}]]
}

tkwait visibility .
set start [clock milliseconds]
show 0
