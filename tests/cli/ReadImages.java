// Decodes pictures with ImageIO: for each file named, every page as FILE.PAGE.rgb, and a line "FILE pages width
// height", or "FILE failed why".
import java.awt.image.BufferedImage;
import java.io.File;
import java.nio.file.Files;
import java.nio.file.Path;
import javax.imageio.ImageIO;
import javax.imageio.ImageReader;
import javax.imageio.stream.ImageInputStream;

class ReadImages {
  static void write(BufferedImage image, Path to) throws Exception {
    int width = image.getWidth(), height = image.getHeight();
    byte[] rgb = new byte[3 * width * height];
    int[] row = new int[width];
    boolean grey = image.getType() == BufferedImage.TYPE_BYTE_GRAY;
    for (int y = 0, at = 0; y < height; y++) {
      if (grey) {  // as they are stored: getRGB takes them for linear light
        for (int x = 0; x < width; x++) row[x] = image.getRaster().getSample(x, y, 0) * 0x010101;
      } else {
        image.getRGB(0, y, width, 1, row, 0, width);
      }
      for (int pixel : row) {
        rgb[at++] = (byte) (pixel >> 16);
        rgb[at++] = (byte) (pixel >> 8);
        rgb[at++] = (byte) pixel;
      }
    }
    Files.write(to, rgb);
  }

  public static void main(String[] files) {
    System.setProperty("java.awt.headless", "true");
    for (String file : files) {
      try (ImageInputStream in = ImageIO.createImageInputStream(new File(file))) {
        ImageReader reader = ImageIO.getImageReaders(in).next();
        reader.setInput(in);
        int pages = reader.getNumImages(true), width = 0, height = 0;
        for (int page = 0; page < pages; page++) {
          BufferedImage image = reader.read(page);
          width = image.getWidth();
          height = image.getHeight();
          write(image, Path.of(file + "." + page + ".rgb"));
        }
        System.out.println(file + " " + pages + " " + width + " " + height);
      } catch (Exception | Error why) {
        System.out.println(file + " failed " + why);
      }
    }
  }
}
