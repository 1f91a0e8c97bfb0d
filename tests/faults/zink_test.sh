# SPDX-License-Identifier: Apache-2.0
# zink_test.sh PROGRAM: a test program on Mesa's OpenGL over Vulkan, on its Vulkan rasteriser, with Vulkan's validation
# layer between the two. What the layer says must be one of the driver's own faults.
set -u

# Faults of Mesa 22.3, whatever the library does:
known=(
    # Sets blend states that its pipeline does not name as dynamic, and none at all where nothing is attached.
    VUID-vkCmdDrawMultiEXT-None-02859
    VUID-vkCmdSetColorBlendEquationEXT-attachmentCount-arraylength
    # Keeps semaphores when a context goes.
    VUID-vkDestroyDevice-device-00378
    # Makes images without a size for a window that has not been drawn to.
    VUID-VkImageCreateInfo-extent-00944
    VUID-VkImageCreateInfo-extent-00945
    # A test draws a texture into itself; GL allows that, and the driver does not take the layout back.
    VUID-VkDescriptorImageInfo-imageLayout-00344
    VUID-vkCmdDrawMultiEXT-None-02699
    # Contexts on several threads share its one queue without a lock.
    UNASSIGNED-Threading-MultipleThreads
)
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
LIBGL_ALWAYS_SOFTWARE=1 MESA_LOADER_DRIVER_OVERRIDE=zink VK_INSTANCE_LAYERS=VK_LAYER_KHRONOS_validation \
    XDG_RUNTIME_DIR=$output xvfb-run -a -s "-noreset -screen 0 640x480x24" "$1" >"$output/log" 2>&1
code=$?
[ $code = 0 ] || tail -50 "$output/log"
# Without a word from the layer it was not there: there is no run without the driver's faults.
grep -qE 'VUID-|UNASSIGNED-' "$output/log" || { echo 'the validation layer was not loaded'; code=1; }
printf '%s\n' "${known[@]}" >"$output/known"
if grep -oE '(VUID|UNASSIGNED)-[A-Za-z0-9_-]+' "$output/log" | grep -vxF -f "$output/known" | sort | uniq -c | grep .; then
    echo 'faults that the driver is not known for'
    code=1
fi
grep -A30 '^mediump has' "$output/log" | sed '/^\[/,$d'
echo "proof: $(grep -c '^\[       OK' "$output/log") tests on zink"
exit $code
