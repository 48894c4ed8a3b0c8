/*
 * lib3ds_write.c - writes a 3DS file with lib3ds (whose chunk layout
 * differs from assimp's: byte and linear colours, face materials inside
 * the face list) for the 3DS reader's tests: MESHES meshes, each a grid
 * of SIDE x SIDE points cut into triangles, the first mesh with texture
 * points.  Plain: each mesh's faces have one material, red or green by
 * turns.  Mixed: faces alternately red and green, and some faces of the
 * last mesh without a material.  Prints "vertices V faces F".
 *   usage: lib3ds_write FILE MESHES SIDE [mixed]
 */
#include <lib3ds/file.h>
#include <lib3ds/material.h>
#include <lib3ds/mesh.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void add_material(Lib3dsFile *file, const char *name, float r, float g, float b)
{
    Lib3dsMaterial *m = lib3ds_material_new();
    strcpy(m->name, name);
    m->diffuse[0] = r;
    m->diffuse[1] = g;
    m->diffuse[2] = b;
    m->diffuse[3] = 1;
    lib3ds_file_insert_material(file, m);
}

int main(int argc, char **argv)
{
    if (argc != 4 && argc != 5) {
        fprintf(stderr, "usage: lib3ds_write FILE MESHES SIDE [mixed]\n");
        return 2;
    }
    int meshes = atoi(argv[2]), side = atoi(argv[3]);
    int mixed = argc == 5 && !strcmp(argv[4], "mixed");
    if (meshes < 1 || side < 2 || side > 255) return 2;
    Lib3dsFile *file = lib3ds_file_new();
    add_material(file, "red", 1, 0, 0);
    add_material(file, "green", 0, 1, 0);
    long vertices = 0, faces = 0;
    for (int k = 0; k < meshes; k++) {
        char name[16];
        snprintf(name, sizeof name, "grid%d", k);
        Lib3dsMesh *mesh = lib3ds_mesh_new(name);
        int n = side * side, f = 2 * (side - 1) * (side - 1);
        lib3ds_mesh_new_point_list(mesh, n);
        for (int i = 0; i < n; i++) {
            mesh->pointL[i].pos[0] = (float)(i % side);
            mesh->pointL[i].pos[1] = (float)(i / side);
            mesh->pointL[i].pos[2] = (float)k;
        }
        if (k == 0) {
            lib3ds_mesh_new_texel_list(mesh, n);
            for (int i = 0; i < n; i++) {
                mesh->texelL[i][0] = (float)(i % side) / (side - 1);
                mesh->texelL[i][1] = (float)(i / side) / (side - 1);
            }
        }
        lib3ds_mesh_new_face_list(mesh, f);
        int j = 0;
        for (int y = 0; y + 1 < side; y++) {
            for (int x = 0; x + 1 < side; x++) {
                int a = y * side + x;
                int corners[2][3] = {{a, a + 1, a + side + 1}, {a, a + side + 1, a + side}};
                for (int t = 0; t < 2; t++, j++) {
                    for (int c = 0; c < 3; c++) mesh->faceL[j].points[c] = (Lib3dsWord)corners[t][c];
                    int none = mixed && k == meshes - 1 && j % 5 == 4;
                    int green = mixed ? j % 2 : k % 2;
                    strcpy(mesh->faceL[j].material, none ? "" : (green ? "green" : "red"));
                }
            }
        }
        lib3ds_file_insert_mesh(file, mesh);
        vertices += n;
        faces += f;
    }
    if (!lib3ds_file_save(file, argv[1])) {
        fprintf(stderr, "lib3ds_write: can't write %s\n", argv[1]);
        return 1;
    }
    lib3ds_file_free(file);
    printf("vertices %ld faces %ld\n", vertices, faces);
    return 0;
}
