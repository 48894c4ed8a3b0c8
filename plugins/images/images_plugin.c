/*
 * images_plugin.c - the entry point of the PNG and JPEG texture plug-in:
 * registers its loaders by suffix through the plug-in interface.
 */
#include "images.h"

int vesk_plugin_init(void)
{
    int ok = vk_register_texture_loader(".png", "PNG image files", png_image_load) != NULL;
    ok = ok && vk_register_texture_loader(".jpg", "JPEG image files", jpeg_image_load) != NULL;
    ok = ok && vk_register_texture_loader(".jpeg", "JPEG image files", jpeg_image_load) != NULL;
    return ok;
}
