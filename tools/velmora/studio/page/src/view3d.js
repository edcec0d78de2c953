// The 3D view: the model's glTF under the scenario chosen, with orbit and zoom, and the reversed
// triangles marked in red.
import * as THREE from 'three';
import { GLTFLoader } from 'three/examples/jsm/loaders/GLTFLoader.js';
import { OrbitControls } from 'three/examples/jsm/controls/OrbitControls.js';

const sky = 0x9eb9d9;

export class ModelView {
  constructor(container) {
    this.container = container;
    this.renderer = new THREE.WebGLRenderer({ antialias: true, preserveDrawingBuffer: true });
    this.renderer.setPixelRatio(window.devicePixelRatio);
    container.append(this.renderer.domElement);
    this.scene = new THREE.Scene();
    this.scene.background = new THREE.Color(sky);
    this.scene.add(new THREE.HemisphereLight(0xffffff, 0x667788, 1.6));
    const sun = new THREE.DirectionalLight(0xffffff, 1.8);
    sun.position.set(1, 2, 1.5);
    this.scene.add(sun);
    this.camera = new THREE.PerspectiveCamera(45, 1, 0.1, 100000);
    this.controls = new OrbitControls(this.camera, this.renderer.domElement);
    this.controls.addEventListener('change', () => this.draw());
    this.model = null;
    this.overlay = null;
    this.bothSides = false;
    this.loads = 0;
    new ResizeObserver(() => this.resize()).observe(container);
  }

  resize() {
    const { clientWidth: width, clientHeight: height } = this.container;
    if (!width || !height) return;
    this.renderer.setSize(width, height);
    this.camera.aspect = width / height;
    this.camera.updateProjectionMatrix();
    this.draw();
  }

  draw() {
    this.renderer.render(this.scene, this.camera);
  }

  // Shows the glTF at `url`; the first model shown, or `reframe`, sets the camera to fit it.
  // A glTF that arrives after a later one was asked for is dropped.
  async show(url, reframe) {
    const ticket = (this.ticket = (this.ticket ?? 0) + 1);
    const gltf = await new GLTFLoader().loadAsync(url);
    if (ticket !== this.ticket) return;
    if (this.model) {
      this.scene.remove(this.model);
      dispose(this.model);
    }
    this.model = gltf.scene;
    this.scene.add(this.model);
    this.setBothSides(this.bothSides);
    if (reframe || this.loads === 0) this.frame();
    this.loads += 1;
    this.draw();
    this.container.dataset.loads = String(this.loads);
  }

  frame() {
    const box = new THREE.Box3().setFromObject(this.model);
    if (box.isEmpty()) box.set(new THREE.Vector3(-1, -1, -1), new THREE.Vector3(1, 1, 1));
    const centre = box.getCenter(new THREE.Vector3());
    const radius = Math.max(box.getSize(new THREE.Vector3()).length() / 2, 0.5);
    const distance = radius / Math.sin(THREE.MathUtils.degToRad(this.camera.fov / 2));
    // From the south-east and a little above, as the thumbnails are drawn.
    const direction = new THREE.Vector3(1, 0.7, 1).normalize();
    this.camera.position.copy(centre).addScaledVector(direction, distance);
    this.camera.near = distance / 100;
    this.camera.far = distance * 100;
    this.camera.updateProjectionMatrix();
    this.controls.target.copy(centre);
    this.controls.update();
  }

  setBothSides(on) {
    this.bothSides = on;
    this.model?.traverse((node) => {
      if (!node.isMesh) return;
      for (const material of [node.material].flat()) {
        material.userData.side ??= material.side;
        material.side = on ? THREE.DoubleSide : material.userData.side;
      }
    });
    this.draw();
  }

  // Marks the triangles given (corners in glTF's axes) in red, drawn over the model from both
  // sides.
  mark(triangles) {
    if (this.overlay) {
      this.scene.remove(this.overlay);
      dispose(this.overlay);
      this.overlay = null;
    }
    if (triangles.length) {
      const positions = new Float32Array(triangles.flatMap((t) => t.corners.flat()));
      const geometry = new THREE.BufferGeometry();
      geometry.setAttribute('position', new THREE.BufferAttribute(positions, 3));
      this.overlay = new THREE.Mesh(
        geometry,
        new THREE.MeshBasicMaterial({
          color: 0xe0301e,
          side: THREE.DoubleSide,
          transparent: true,
          opacity: 0.75,
          polygonOffset: true,
          polygonOffsetFactor: -2,
        }),
      );
      this.scene.add(this.overlay);
    }
    this.draw();
  }
}

function dispose(object) {
  object.traverse((node) => {
    node.geometry?.dispose();
    for (const material of [node.material ?? []].flat()) {
      for (const value of Object.values(material)) if (value?.isTexture) value.dispose();
      material.dispose();
    }
  });
}
